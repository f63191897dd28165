#include "services/SoftwareAgent.h"

#include <utility>

#include "LocalMgmtIfc.h"
#include "data/ManageableData.h"
#include "log/Log.h"

namespace vireo {
namespace {

using View = SoftwareBanks::View;

constexpr const char* kVersion = "software-version";

std::string versionIn(const View& view, Bank bank) {
    const auto& header = view.of(bank).header;
    return header ? header->version.text() : std::string();
}

std::string statusOf(const View& view) {
    return view.isOnTrial()                                                        ? "trial"
           : view.marker.failed != Bank::eNone && view.running == view.marker.bank ? "fallback"
                                                                                   : "confirmed";
}

std::string statusOfBank(const View& view, Bank bank) {
    if (view.of(bank).isEmpty()) {
        return "empty";
    }
    if (!view.of(bank).header) {
        return "damaged";
    }
    if (view.running == bank) {
        return "running";
    }
    if (view.marker.isTrial && view.marker.bank == bank) {
        return "next";
    }
    return view.marker.failed == bank ? "failed" : "spare";
}

struct Item {
    const char* tag;
    std::string (*value)(const View& view);
};

constexpr Item kItems[] = {
    {kVersion, [](const View& view) { return versionIn(view, view.running); }},
    {"software-bank",
     [](const View& view) {
         return view.running == Bank::eNone ? std::string("installed")
                                            : std::string(1, static_cast<char>(view.running));
     }},
    {"software-status", statusOf},
    {"software-bank-a-version", [](const View& view) { return versionIn(view, Bank::eA); }},
    {"software-bank-a-status", [](const View& view) { return statusOfBank(view, Bank::eA); }},
    {"software-bank-b-version", [](const View& view) { return versionIn(view, Bank::eB); }},
    {"software-bank-b-status", [](const View& view) { return statusOfBank(view, Bank::eB); }},
};

}  // namespace

void SoftwareAgent::serve(LocalMgmtIfc& management, Post post) {
    // While nobody owns it, the item reads as its schema has it.
    management.getData(kVersion, m_installedVersion);
    if (!management.registerManagementIdentity(kManagementId, this, true) &&
        loggingOnUni(kLogWarning)) {
        logAppUni("SoftwareAgent", "./host/services/SoftwareAgent", kLogWarning, __LINE__,
                  "somebody else owns the items of %s", kManagementId);
        return;
    }
    m_banks.onChange([this, &management, post = std::move(post)] {
        post([this, &management] { announce(management); });
    });
}

std::string SoftwareAgent::valueOf(const std::string& tag, const View& view) const {
    if (tag == kVersion && view.running == Bank::eNone) {
        return m_installedVersion;
    }
    for (const Item& item : kItems) {
        if (tag == item.tag) {
            return item.value(view);
        }
    }
    return {};
}

bool SoftwareAgent::getData(ManageableData& record) {
    const View view = m_banks.view();
    bool result = true;
    const std::vector<std::string> tags = record.rootIds();
    for (const std::string& tag : tags) {
        result = record.populate(tag, valueOf(tag, view)) && result;
    }
    return result;
}

bool SoftwareAgent::setData(ManageableData& record) {
    const std::vector<std::string> tags = record.rootIds();
    for (const std::string& tag : tags) {
        record.addRejectReason(tag, "//*", RejectReasonsStrings::not_supported);
    }
    return tags.empty();
}

void SoftwareAgent::announce(LocalMgmtIfc& management) const {
    const View view = m_banks.view();
    ManageableData record;
    for (const Item& item : kItems) {
        record.populate(item.tag, valueOf(item.tag, view));
    }
    management.manageableDataChanged(record);
}

}  // namespace vireo
