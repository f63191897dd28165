#include "check/NeededItemsCheck.h"

#include <algorithm>

#include "items/ItemCatalogue.h"

namespace vireo {

void NeededItemsCheck::run() const {
    for (const NeededItems& needed : kNeededItems) {
        const auto end = std::find(needed.tags.begin(), needed.tags.end(), nullptr);
        checkAll(needed, std::vector<std::string>(needed.tags.begin(), end));
    }
    for (const char* infix : kDownloadInfixes) {
        checkDownloads(infix);
    }
}

void NeededItemsCheck::checkDownloads(const std::string& infix) const {
    std::vector<std::string> tags;
    for (const char* ending : kDownloadEndings) {
        tags.push_back("dl-" + infix + ending);
    }
    const std::string purpose = "downloads with the items dl-" + infix + "-...";
    checkAll({purpose.c_str(), true, false, {}}, tags);
}

void NeededItemsCheck::checkAll(const NeededItems& needed,
                                std::span<const std::string> tags) const {
    const auto isMissing = [this](const std::string& tag) { return !m_items.contains(tag); };
    if (needed.isOptional && std::all_of(tags.begin(), tags.end(), isMissing)) {
        m_findings.warning({"nothing maps the items for ", needed.purpose, ": ", tags.front(),
                            tags.size() > 1 ? " and so on" : ""},
                           "add them to an item map if the phone is to do that");
        return;
    }
    for (const std::string& tag : tags) {
        if (isMissing(tag)) {
            m_findings.error({"nothing maps \"", tag, "\", needed for ", needed.purpose},
                             "add the item to the item map of its owner");
        } else if (needed.isOwn) {
            checkOwner(tag);
        }
    }
}

void NeededItemsCheck::checkOwner(const std::string& tag) const {
    const KnownItem& item = m_items.find(tag)->second;
    if (item.owner != kOwnManagementId) {
        m_findings.error({"\"", tag, "\" belongs to ", item.owner,
                          ", but only the service itself can answer for it"},
                         "move it to an item map of VcmsMgmtId");
    }
}

}  // namespace vireo
