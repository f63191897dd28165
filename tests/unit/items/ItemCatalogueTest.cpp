#include <thread>

#include "items/ItemCatalogue.h"
#include "unit/items/ItemHouse.h"

namespace vireo::test {
namespace {

using ItemCatalogueTest = ItemHouse;

/// With the files as they are, and with files that are read as trees.
class ItemCatalogueFormTest : public ItemHouse, public ::testing::WithParamInterface<bool> {
protected:
    ItemCatalogueFormTest() {
        for (auto& [name, content] : ports.files) {
            if (GetParam() && content.starts_with("<dxl>")) {
                content.insert(5, "<?other program?>");
            }
        }
    }
};

INSTANTIATE_TEST_SUITE_P(Forms, ItemCatalogueFormTest, ::testing::Bool());

TEST_P(ItemCatalogueFormTest, KnowsOwnersSchemasAndAddressesOfConfiguredItems) {
    load();
    EXPECT_EQ(catalogue.findManagementId("melody"), "VcmsMgmtId")
        << "the first service's row stays";
    EXPECT_EQ(catalogue.findSchemaName("melody"), "text");
    EXPECT_EQ(catalogue.findManagementId("lazy"), "LazyMgmtId");
    for (const char* unknown : {"", "nothing", "*", "..", "../up", "managementId", "a/b"}) {
        EXPECT_EQ(catalogue.findManagementId(unknown), "") << unknown;
        EXPECT_EQ(catalogue.findSchemaName(unknown), "") << unknown;
    }
    EXPECT_EQ(catalogue.storedNodes("account"), (Texts{"user", "realm"}));
    EXPECT_EQ(catalogue.storedNodes("key-2"), Texts{"key-2"});
    EXPECT_TRUE(catalogue.storedNodes("plain").empty());
    EXPECT_EQ(catalogue.storeAddress({"key-2", "key-2"})->indexValue, "2");
    EXPECT_EQ(catalogue.indexColumn("Keys"), "KeyIndex");
    EXPECT_EQ(catalogue.indexColumn("Settings"), "");
    EXPECT_TRUE(catalogue.isCallFailingItem("guarded"));
    EXPECT_FALSE(catalogue.isCallFailingItem("melody"));
}

TEST_P(ItemCatalogueFormTest, MissingOptionalElementsShiftNothing) {
    load();
    // Of the mapping's rows some lack a default; of the services the first lacks the marker.
    EXPECT_EQ(catalogue.storeAddress({"melody", "melody"})->defaultValue, "7");
    EXPECT_EQ(catalogue.storeAddress({"volume", "volume"})->defaultValue, std::nullopt);
    EXPECT_EQ(catalogue.storeAddress({"account", "user"})->defaultValue, "nobody");
    EXPECT_EQ(catalogue.storeAddress({"account", "realm"})->defaultValue, std::nullopt);
    EXPECT_EQ(catalogue.storeAddress({"guarded", "guarded"})->defaultValue, "on");
    EXPECT_FALSE(catalogue.isUncachedUnlessRegistered("VcmsMgmtId"));
    EXPECT_TRUE(catalogue.isUncachedUnlessRegistered("EagerMgmtId"));
    EXPECT_FALSE(catalogue.isUncachedUnlessRegistered("LazyMgmtId")) << "only exactly \"true\"";
}

TEST_P(ItemCatalogueFormTest, NamesOfConfigurationDocumentsCannotBeItems) {
    load();
    EXPECT_EQ(catalogue.findManagementId("lazyItems"), "");
    EXPECT_EQ(catalogue.findManagementId("masterItemMap"), "");
    EXPECT_EQ(ports.count(kLogWarning, "skipped: the name is reserved"), 2);
    EXPECT_EQ(ports.count(kLogWarning, "skipped: not an item name"), 1);
}

TEST_P(ItemCatalogueFormTest, AMappedNodeReplacesATableEntryOfTheSameKeyOnly) {
    std::string& items = ports.files["items.xml"];
    const std::string row =
        "<item><rootId>key-1</rootId><nodeId>%</nodeId><dasSchemaName>Settings</dasSchemaName>"
        "<dasItemName>Melody</dasItemName></item>";
    for (const char* node : {"other", "key-1", "key-1"}) {
        std::string with = row;
        with.replace(with.find('%'), 1, node);
        items.insert(items.find("</document></dxl>"), with);
    }
    load();
    EXPECT_EQ(catalogue.storeAddress({"key-1", "key-1"})->table, "Settings");
    EXPECT_EQ(catalogue.storeAddress({"key-1", "other"})->column, "Melody");
    EXPECT_EQ(catalogue.storeAddress({"key-2", "key-2"})->table, "Keys");
    EXPECT_EQ(catalogue.storedNodes("key-1").size(), 2U) << "a node is listed once";
}

TEST_P(ItemCatalogueFormTest, KeepsTheMasterItemMapAsADocument) {
    load();
    const auto map = catalogue.master().getDocument("masterItemMap");
    ASSERT_NE(map, nullptr);
    EXPECT_EQ(map->schemaName(), "masterItemMap");
    EXPECT_EQ(map->root()->child("melody")->value(),
              "<managementId>VcmsMgmtId</managementId><schema>text</schema>");
    EXPECT_EQ(map->root()->children().back()->getName(), "time");
    EXPECT_EQ(catalogue.master().getSchema("masterItemMap")->root(), map->root());
    EXPECT_EQ(catalogue.itemsOf("LazyMgmtId"), (Texts{"lazy", "lazy-2", "time"}));
}

TEST_F(ItemCatalogueTest, ThreadsThatAskForAnAddressAtOnceGetTheSame) {
    load();
    const StoreAddress* found[2] = {};
    std::thread other([&] { found[0] = catalogue.storeAddress({"account", "realm"}); });
    found[1] = catalogue.storeAddress({"account", "realm"});
    other.join();
    ASSERT_NE(found[0], nullptr);
    EXPECT_EQ(found[0], found[1]);
    EXPECT_EQ(found[0], catalogue.storeAddress({"account", "realm"})) << "and it stays";
}

TEST_F(ItemCatalogueTest, WithoutServiceListNothingIsKnown) {
    ports.files.erase("vcmsInit.xml");
    EXPECT_FALSE(catalogue.load(collections));
    EXPECT_EQ(ports.count(kLogDebug, "VCMS - No Doc List found"), 1);
    EXPECT_EQ(catalogue.findManagementId("melody"), "");
    EXPECT_EQ(get("melody"), "(failed)");
    EXPECT_EQ(set({{"melody", "1"}}, false), Texts{});
}

TEST_F(ItemCatalogueTest, MissingAndMalformedFilesDoNotStopTheStart) {
    ports.files["items.xml"] = "<dxl><document";
    ports.files.erase("CallFailingItems.xml");
    load();
    EXPECT_EQ(ports.lines(kLogError).size(), 2U);
    EXPECT_EQ(catalogue.findManagementId("melody"), "");
}

TEST_F(ItemCatalogueTest, LogsItsStepsInOrder) {
    load();
    EXPECT_EQ(ports.lines(kLogDebug),
              (Texts{"VCMS - importing vcmsInit.xml",
                     "VCMS - importing Service Config Files",
                     "VCMS - importing File items.xml",
                     "VCMS - digest the item maps ",
                     "VCMS - processing ownItems",
                     "VCMS - digesting ownItems ",
                     "VCMS - processing eagerItems",
                     "VCMS - digesting eagerItems ",
                     "VCMS - processing lazyItems",
                     "VCMS - digesting lazyItems ",
                     "VCMS - digest cachable management IDs when not registered ",
                     "VCMS - processing EagerMgmtId (value = true)",
                     "VCMS - processing LazyMgmtId (value = TRUE)",
                     "VCMS - make the masterItemMap document",
                     "VCMS - process DAS table item maps",
                     "VCMS - digesting keyItems ",
                     "VCMS - process Data Colelctions",
                     "VCMS - digesting pairItems ",
                     "VCMS - digesting overlapItems ",
                     "VCMS - digesting nestItems ",
                     "VCMS - digesting loopItems ",
                     "VCMS - digesting oddItems ",
                     "VCMS - digesting pairItems ",
                     "VCMS - digesting left ",
                     "VCMS - digesting right ",
                     "VCMS - retrieving call failing VCMS items: reading from file "
                     "CallFailingItems.xml"}));
}

}  // namespace
}  // namespace vireo::test
