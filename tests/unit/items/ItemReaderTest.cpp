#include "items/ItemReader.h"
#include "unit/items/ItemHouse.h"

namespace vireo::test {
namespace {

class ItemReaderTest : public ItemHouse {
protected:
    ItemReaderTest() { load(); }
};

TEST_F(ItemReaderTest, AnswersEachKindOfItemFromItsSource) {
    EXPECT_EQ(get("melody"), "7") << "the mapping's default";
    EXPECT_EQ(get("volume"), "") << "neither value nor default";
    EXPECT_EQ(get("key-1"), "") << "no row yet";
    EXPECT_EQ(get("plain"), "preset") << "not stored: the schema's default";
    EXPECT_EQ(get("lazy"), "preset") << "owner not registered: the schema's default";
    EXPECT_EQ(get("eager"), "");
    EXPECT_EQ(get("account"), "<user>nobody</user><realm></realm>");
    EXPECT_EQ(get("nothing"), "(failed)");
    EXPECT_EQ(ports.count(kLogError, "getData: rootId = nothing not found"), 1);
    EXPECT_EQ(get("no-schema"), "(failed)");
}

TEST_F(ItemReaderTest, WhatTheCallerSendsAlongDoesNotStandInTheWay) {
    for (const char* schema : {"zzz", "account"}) {
        ManageableData record;
        record.putDocument(std::make_shared<const DxlDocument>(
            "account", std::make_shared<const DxlNode>(schema, DxlNode::Kind::eLeaf, "text")));
        record.addRootId("account", nullptr);
        EXPECT_TRUE(reader.getData(record)) << schema;
        EXPECT_EQ(record.interogate("account")->value(), "<user>nobody</user><realm></realm>");
    }
}

TEST_F(ItemReaderTest, SpecialItemsAreToldByWhatTheirTagsContain) {
    EXPECT_EQ(get("x-locked-config-menus-file-y"), "locked") << "the lock test comes first";
    EXPECT_EQ(get("a-file-request"), "(failed)");
    EXPECT_EQ(ownItems.calls, (Texts{"readLockedDown x-locked-config-menus-file-y",
                                     "readFileRequest a-file-request"}));
    EXPECT_EQ(get("phone-busy-status"), "false");
    ownItems.busy = 512;
    EXPECT_EQ(get("phone-busy-status"), "true");
}

TEST_F(ItemReaderTest, OneFailingItemStopsNoOther) {
    ManageableData record = requestFor({"melody", "nothing", "key-lost", "lazy"});
    store->requests.clear();
    EXPECT_FALSE(reader.getData(record));
    EXPECT_EQ(record.interogate("melody")->value(), "7");
    EXPECT_EQ(record.interogate("lazy")->value(), "preset");
    EXPECT_FALSE(record.getDocument("nothing"));
    EXPECT_TRUE(record.getSchema("text"));
    EXPECT_EQ(store->requests.size(), 1U) << "without an index value nothing is sent";
    EXPECT_EQ(ports.count(kLogError, "no index value for key-lost"), 1);

    ManageableData empty;
    EXPECT_FALSE(reader.getData(empty));
}

TEST_F(ItemReaderTest, AStoreThatFailsOrIsMissingFailsItsItems) {
    store->fails = true;
    EXPECT_EQ(get("melody"), "(failed)");
    EXPECT_EQ(ports.count(kLogError, "persistent store: store is gone"), 1);
    store.reset();
    EXPECT_EQ(get("melody"), "(failed)");
    EXPECT_EQ(get("plain"), "preset");
    EXPECT_EQ(set({{"melody", "1"}, {"plain", "2"}}, false), Texts{"melody: Unknown"});
}

TEST_F(ItemReaderTest, SimpleReadsUseTheValueCacheForOtherOwnersOnly) {
    std::string value;
    ASSERT_TRUE(reader.getData("lazy", value));
    ManageableData behind;
    behind.copySchema("preset", catalogue.master());
    behind.makeDocument("preset", "lazy");
    behind.populate("lazy", "changed behind");
    catalogue.keepItem(behind, "lazy");
    ASSERT_TRUE(reader.getData("lazy", value));
    EXPECT_EQ(value, "preset") << "from the cache";
    EXPECT_EQ(get("lazy"), "changed behind") << "a record's read never uses it";
    cache.invalidate();
    ASSERT_TRUE(reader.getData("lazy", value));
    EXPECT_EQ(value, "changed behind");

    EXPECT_EQ(set({{"lazy", "written"}}, true), Texts{});
    ASSERT_TRUE(reader.getData("lazy", value));
    EXPECT_EQ(value, "written") << "a change corrects the cache";

    cache.update("melody", "cached");
    ASSERT_TRUE(reader.getData("melody", value));
    EXPECT_EQ(value, "7") << "never consulted for own items";

    cache.update("time", "12:00");
    EXPECT_FALSE(cache.fetch("time", value)) << "never cached";
    EXPECT_FALSE(reader.getData("nothing", value));
    EXPECT_EQ(value, "7");
    EXPECT_EQ(ports.count(kLogError, "getData failed... nothing,7"), 1);
}

TEST_F(ItemReaderTest, AValueReadBeforeAChangeDoesNotReplaceTheChange) {
    TestAgent owner;
    ASSERT_TRUE(registry.addAgent("LazyMgmtId", {&owner, false}));
    owner.onGet = [this](ManageableData& record) {
        record.populate("lazy", "old");
        // The owner changes it while its old answer is on the way.
        notifier.announce(recordOf({"lazy=new"}), notifier.begin());
        return true;
    };
    std::string value;
    ASSERT_TRUE(reader.getData("lazy", value));
    EXPECT_EQ(value, "old");
    ASSERT_TRUE(cache.fetch("lazy", value));
    EXPECT_EQ(value, "new");

    const ValueCache::Mark first = cache.mark();
    const ValueCache::Mark second = cache.mark();
    cache.correct(second, "lazy", "second");
    cache.correct(first, "lazy", "first");
    EXPECT_FALSE(cache.fetch("lazy", value)) << "of two changes at a time neither is believed";
}

TEST_F(ItemReaderTest, ValueOrQuestionMarks) {
    EXPECT_EQ(reader.getValueFromVCMS("melody"), "7");
    EXPECT_EQ(reader.getValueFromVCMS("nothing"), "???");
    EXPECT_EQ(ports.count(kLogError, "getValueFromVCMS() failed for tag 'nothing'"), 1);
}

TEST_F(ItemReaderTest, OwnersAreAskedOncePerItemOrOncePerRead) {
    TestAgent single;
    TestAgent bulk;
    int bulkCalls = 0;
    single.onGet = [](ManageableData& record) { return record.populate("eager", "from owner"); };
    bulk.onGet = [&bulkCalls](ManageableData& record) {
        ++bulkCalls;
        EXPECT_EQ(record.rootIds(), (Texts{"lazy", "lazy-2"}));
        return record.populate("lazy", "1") && record.populate("lazy-2", "2");
    };
    registry.addAgent("EagerMgmtId", {&single, false});
    registry.addAgent("LazyMgmtId", {&bulk, true});
    ManageableData record = requestFor({"lazy", "eager", "lazy-2"});
    EXPECT_TRUE(reader.getData(record));
    EXPECT_EQ(bulkCalls, 1);
    EXPECT_EQ(record.rootIds(), (Texts{"lazy", "eager", "lazy-2"}));
    EXPECT_EQ(record.interogate("eager")->value(), "from owner");
    EXPECT_EQ(record.interogate("lazy-2")->value(), "2");

    bulk.onGet = [](ManageableData&) -> bool { throw 1; };
    EXPECT_FALSE(reader.getData(record));
    EXPECT_EQ(ports.count(kLogError, "getData of an agent: unknown exception"), 1);
}

TEST_F(ItemReaderTest, AnOwnersSchemasTakeNobodysPlace) {
    TestAgent owner;
    std::string schemaName = "text";
    owner.onGet = [&](ManageableData& record) {
        const auto named = [&](const std::string& name) {
            return std::make_shared<const DxlNode>(name, DxlNode::Kind::eLeaf, "of the owner");
        };
        record.putSchema(std::make_shared<const DxlSchema>(named(schemaName)));
        record.putDocument(std::make_shared<const DxlDocument>("eager", named(schemaName)));
        return true;
    };
    ASSERT_TRUE(registry.addAgent("EagerMgmtId", {&owner, false}));
    ManageableData record = requestFor({"volume", "eager"});
    EXPECT_TRUE(reader.getData(record));
    EXPECT_EQ(record.interogate("eager")->value(), "of the owner");
    EXPECT_EQ(record.getSchema("text"), catalogue.master().getSchema("text"));
    schemaName = "own";
    EXPECT_TRUE(reader.getData(record));
    EXPECT_TRUE(record.getSchema("own")) << "one that nobody else has comes along";
}

}  // namespace
}  // namespace vireo::test
