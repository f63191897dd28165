#include "check/ItemMapCheck.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "items/ItemCatalogue.h"
#include "items/OwnItemKind.h"

namespace vireo {
namespace {

constexpr const char* kItemColumns[] = {"rootId", "schema"};

bool isNumber(std::string_view text) {
    return !text.empty() &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

/// "file-", what is asked or told, and the number of the request: "file-action-1".
bool isFileRequestTag(std::string_view tag) {
    const std::size_t dash = tag.rfind('-');
    return tag.starts_with("file-") && dash > 5 && isNumber(tag.substr(dash + 1));
}

constexpr std::string_view kLockLists[] = {"locked-config-menus", "locked-local-function-menus"};

/// The list's own name, or that and a number.
bool isLockListTag(std::string_view tag) {
    return std::any_of(std::begin(kLockLists), std::end(kLockLists), [tag](std::string_view list) {
        return tag == list || (tag.starts_with(list) && tag[list.size()] == '-' &&
                               isNumber(tag.substr(list.size() + 1)));
    });
}

}  // namespace

KnownItems ItemMapCheck::run() {
    const auto services = m_documents.getDocument("vcmsServiceList");
    if (!services) {
        m_rows.of("vcmsInit.xml")
            .error({"there is no document \"vcmsServiceList\", so there are no items"},
                   "the file has to list the services");
        return {};
    }
    services->root()->forEachChild("service",
                                   [this](const DxlNode& service) { readService(service); });
    return std::move(m_items);
}

void ItemMapCheck::readService(const DxlNode& service) {
    const DocumentFindings findings = m_rows.of("vcmsServiceList");
    const DxlNode* owner = service.child("managementId");
    const DxlNode* itemMap = service.child("itemMap");
    if ((owner == nullptr) != (itemMap == nullptr)) {
        findings.error({"a <service> with <", owner ? "managementId" : "itemMap", "> ",
                        owner ? owner->value() : itemMap->value(), " lacks <",
                        owner ? "itemMap" : "managementId", ">, so its items are unknown"},
                       "add the element; a service that only imports files needs neither");
    } else if (owner != nullptr) {
        readItemMap(owner->value(), itemMap->value());
    }
    const DxlNode* flag = service.child("dontCacheUnlessRegistered");
    if (flag != nullptr && flag->text() != "true" && flag->text() != "false") {
        findings.warning({"<dontCacheUnlessRegistered> is \"", flag->text(),
                          "\", which means the same as false"},
                         "write true or false");
    }
}

void ItemMapCheck::readItemMap(const std::string& owner, const std::string& itemMap) {
    const RowForm form{"item", kItemColumns, 2};
    m_rows.forEach(itemMap, form, "vcmsServiceList", [&](const RowTexts& row) {
        const std::string& tag = *row[0];
        if (!m_maps.items->contains(tag)) {
            return;  // the loader has refused the name, and said so
        }
        const auto [item, isNew] = m_items.try_emplace(tag, KnownItem{owner, *row[1], itemMap});
        if (!isNew) {
            m_rows.of(itemMap).error({"item \"", tag, "\" belongs to ", item->second.owner,
                                      " already, in ", item->second.document},
                                     "take one of the two rows out");
            return;
        }
        checkSchema(tag, item->second);
        checkMeaning(tag, item->second);
    });
}

void ItemMapCheck::checkSchema(const std::string& tag, const KnownItem& item) const {
    if (!m_documents.getSchema(item.schema)) {
        m_rows.of(item.document)
            .error({"item \"", tag, "\" has the unknown schema \"", item.schema, "\""},
                   "name a schema that there is, or add this one to an imported file");
    }
}

void ItemMapCheck::checkMeaning(const std::string& tag, const KnownItem& item) const {
    const OwnItemKind kind = ownItemKind(tag);
    if (item.owner != kOwnManagementId) {
        return;
    }
    if (kind == OwnItemKind::eFileRequest && !isFileRequestTag(tag)) {
        m_rows.of(item.document)
            .error({"item \"", tag, "\" contains \"file-\", so it is taken for a file request"},
                   "give it another tag or another owner; file requests look like file-action-1");
    }
    if (kind == OwnItemKind::eLockDown && !isLockListTag(tag)) {
        m_rows.of(item.document)
            .error({"item \"", tag, "\" contains the name of a lock list, so it is taken for one"},
                   "give it another tag or another owner; lock lists have just that name");
    }
}

}  // namespace vireo
