#include "check/CatalogueCheck.h"

#include <set>

#include "Boundary.h"
#include "check/CallFailingCheck.h"
#include "check/CollectionCheck.h"
#include "check/ItemMapCheck.h"
#include "check/NeededItemsCheck.h"
#include "check/StoreMappingCheck.h"
#include "data/DataCollection.h"
#include "items/CatalogueLoader.h"

namespace vireo {
namespace {

ConfigurationSize checkAll(const StoreLayout* store, ConfigurationFindings& findings) {
    DxlCollection master("vcms");
    DxlCollection callFailing("vcms");
    DataCollection collections(nullptr);
    ItemMaps maps;
    const bool isLoaded = CatalogueLoader(master, callFailing, collections, maps).load();
    const DocumentRows rows(master, findings);
    const KnownItems items = ItemMapCheck(master, maps, rows).run();
    if (!isLoaded) {
        return {};  // without services all else would follow from that
    }
    StoreMappingCheck(master, maps, items, store, rows).run();
    const std::size_t collectionCount = CollectionCheck(master, items, rows).run();
    CallFailingCheck(items, DocumentRows(callFailing, findings)).run();
    NeededItemsCheck(items, rows).run();
    std::set<std::string> owners;
    for (const auto& [tag, item] : items) {
        owners.insert(item.owner);
    }
    return {items.size(), owners.size(), collectionCount};
}

}  // namespace

ConfigurationSize CatalogueCheck::check(const StoreLayout* store, ConfigurationFindings& findings) {
    return guarded("configuration check", ConfigurationSize{},
                   [&] { return checkAll(store, findings); });
}

}  // namespace vireo
