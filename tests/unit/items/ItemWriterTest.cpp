#include <sqlite3.h>

#include "items/ItemWriter.h"
#include "unit/items/ItemHouse.h"

namespace vireo::test {
namespace {

class ItemWriterTest : public ItemHouse {
protected:
    ItemWriterTest() {
        load();
        registry.addObserver(kAllData, {&observer, true});
    }

    TestAgent observer;
};

TEST_F(ItemWriterTest, AMixedRecordIsAcceptedAndRefusedItemByItem) {
    ownItems.busy = 513;
    EXPECT_EQ(set({{"melody", "1"},
                   {"guarded", "off"},
                   {"lazy", "2"},
                   {"eager", "3"},
                   {"plain", "4"},
                   {"key-2", "5"},
                   {"key-lost", "6"}},
                  false),
              (Texts{"guarded: Change not allowed: Phone is busy!", "eager: Service not registered",
                     "key-lost: Unknown"}));
    EXPECT_EQ(observer.told, Texts{"melody=1 lazy=2 plain=4 key-2=5"})
        << "observers hear of exactly what was written";
    EXPECT_EQ(get("melody"), "1");
    EXPECT_EQ(get("guarded"), "on");
    EXPECT_EQ(get("lazy"), "2");
    EXPECT_EQ(get("eager"), "");
    EXPECT_EQ(get("plain"), "4");
    EXPECT_EQ(get("key-1"), "");
    EXPECT_EQ(get("key-2"), "5");
    EXPECT_EQ(ports.count(kLogError,
                          "setData: failure[2] for setting rootId 'key-lost', path "
                          "'//*', failure message 'Unknown'"),
              1);
}

TEST_F(ItemWriterTest, UnknownItemsFailWithoutRefusal) {
    EXPECT_EQ(set({{"nothing", "1"}, {"melody", "2"}}, false), Texts{});
    EXPECT_EQ(get("melody"), "2");
    ManageableData withoutValue;
    withoutValue.setRootId("melody", nullptr);
    EXPECT_TRUE(writer.setData(withoutValue)) << "nothing to write is no failure";
    EXPECT_TRUE(withoutValue.rejections().empty());
    ManageableData empty;
    observer.told.clear();
    EXPECT_FALSE(writer.setData(empty));
    EXPECT_TRUE(observer.told.empty());
}

TEST_F(ItemWriterTest, OnlyTheCallBitRefusesCallFailingItems) {
    ownItems.busy = 512;
    EXPECT_EQ(set({{"guarded", "a"}}, true), Texts{});
    ownItems.busy = 1;
    EXPECT_EQ(set({{"guarded", "b"}}, false), Texts{"guarded: Change not allowed: Phone is busy!"});
    EXPECT_EQ(get("guarded"), "a");
}

TEST_F(ItemWriterTest, StoreRequestsAreExactAndUnescaped) {
    set({{"melody", "<&\"</Melody>"}}, true);
    set({{"key-2", "x"}}, true);
    get("melody");
    get("key-2");
    const std::string head = R"(<?xml version="1.0" encoding="utf-8"?><Schema name=")";
    EXPECT_EQ(store->requests,
              (Texts{head + R"(Settings"><ReasonForMessage>update_request</ReasonForMessage>)"
                            R"(<Melody><&"</Melody></Melody></Schema>)",
                     head + R"(Keys"><ReasonForMessage>update_request</ReasonForMessage><Entry>)"
                            R"(<KeyIndex>2</KeyIndex><Label>x</Label></Entry></Schema>)",
                     head + R"(Settings"><ReasonForMessage>read_request</ReasonForMessage>)"
                            R"(<ResultCols>Melody</ResultCols></Schema>)",
                     head + R"(Keys"><ReasonForMessage>read_request</ReasonForMessage>)"
                            R"(<ResultCols>Label</ResultCols><Entry><KeyIndex>2</KeyIndex></Entry>)"
                            R"(</Schema>)"}));
    EXPECT_EQ(get("melody"), "<&\"</Melody>");
}

TEST_F(ItemWriterTest, ASchemalessWriteIsLaidOutByTheItemsSchema) {
    EXPECT_EQ(set({{"account", "<user>u&amp;1</user><realm>r</realm>"}, {"melody", "3"}}, true),
              Texts{});
    EXPECT_EQ(get("account"), "<user>u&amp;1</user><realm>r</realm>");

    ManageableData realmOnly;
    ASSERT_TRUE(realmOnly.populate("account", "realm", "r2"));
    EXPECT_TRUE(writer.setData(realmOnly));
    EXPECT_EQ(get("account"), "<user>u&amp;1</user><realm>r2</realm>")
        << "a node that the record does not carry is left alone";
    EXPECT_EQ(realmOnly.getDocument("account")->schemaName(), "account");
}

TEST_F(ItemWriterTest, AValueWithoutThePartsOfItsSchemaIsRefusedAndTheOldOneStays) {
    const std::string good = "<user>u</user><realm>r</realm>";
    EXPECT_EQ(set({{"account", good}}, true), Texts{});
    for (const char* bad : {"", " ", "hello", "<user>2</user><realm>", "<user>2</user><bogus/>",
                            "<user>2</user> and more", "a&b"}) {
        EXPECT_EQ(set({{"account", bad}, {"plain", "x"}}, false), Texts{"account: Invalid data"})
            << bad;
        EXPECT_EQ(get("account"), good) << bad;
    }
    EXPECT_EQ(observer.told.back(), "plain=x");
    EXPECT_EQ(set({{"account", " <realm>s</realm>\n"}}, true), Texts{});
    EXPECT_EQ(get("account"), "<user>u</user><realm>s</realm>");
}

TEST_F(ItemWriterTest, RefusalsOfAnEarlierWriteDoNotCount) {
    ManageableData record;
    record.populate("melody", "5");
    record.addRejectReason("melody", "//*", "old");
    EXPECT_TRUE(writer.setData(record));
    EXPECT_TRUE(record.rejections().empty());
    EXPECT_EQ(observer.told, Texts{"melody=5"});
}

TEST_F(ItemWriterTest, TheConfiguredSchemaHoldsWhateverADocumentNames) {
    const auto write = [this](const char* tag, const std::shared_ptr<DxlNode>& root) {
        ManageableData record;
        record.putSchema(std::make_shared<const DxlSchema>(
            std::make_shared<DxlNode>(root->getName(), DxlNode::Kind::eLeaf)));
        record.putDocument(std::make_shared<const DxlDocument>(tag, root));
        record.addRootId(tag, nullptr);
        return writer.setData(record);
    };
    const std::string good = "<user>u</user><realm>r</realm>";
    EXPECT_EQ(set({{"account", good}}, true), Texts{});
    for (const char* schema : {"text", "account", "own", "masterItemMap"}) {
        EXPECT_FALSE(
            write("account", std::make_shared<DxlNode>(schema, DxlNode::Kind::eLeaf, "plain")))
            << schema;
        EXPECT_EQ(get("account"), good);
    }
    const auto nested = std::make_shared<DxlNode>("own", DxlNode::Kind::eBranch);
    nested->append(std::make_shared<DxlNode>("x", DxlNode::Kind::eLeaf, "1"));
    EXPECT_FALSE(write("lazy", nested)) << "a leaf carries text alone";
    EXPECT_TRUE(write("lazy", std::make_shared<DxlNode>("own", DxlNode::Kind::eLeaf, "1")));
    EXPECT_EQ(catalogue.findSchemaName("lazy"), "preset");
    EXPECT_FALSE(catalogue.master().getSchema("own"));
    EXPECT_EQ(set({{"lazy", "2"}, {"account", "<user><x>1</x></user>"}}, false),
              Texts{"account: Invalid data"});
    EXPECT_EQ(get("lazy"), "2");
}

TEST_F(ItemWriterTest, SpecialItemsGoToTheirManagers) {
    ownItems.statuses = {
        {2, {2, "a-file-request", ""}}, {1, {1, "one-file-", "too big"}}, {3, {3, "x", "y"}}};
    EXPECT_EQ(set({{"a-file-request", "go"}, {"x-locked-config-menus-file-y", "all"}}, true),
              (Texts{"one-file-: too big", "a-file-request: Initiated"}));
    EXPECT_EQ(ownItems.calls, (Texts{"changeFileRequest a-file-request=go",
                                     "changeLockedDown x-locked-config-menus-file-y=all",
                                     "flushLockedDown", "flushFileRequests"}));

    ownItems.calls.clear();
    ownItems.statuses.clear();
    ownItems.lockAccepts = false;
    EXPECT_EQ(set({{"a-file-request", "bad"}, {"x-locked-config-menus-file-y", "all"}}, false),
              (Texts{"a-file-request: no room", "x-locked-config-menus-file-y: Unknown"}));
    EXPECT_EQ(ownItems.calls.back(), "flushFileRequests");

    ownItems.calls.clear();
    for (const char* value : {"1", "2", "3", ""}) {
        EXPECT_EQ(set({{"memory-monitor-remote-callback", value}}, true), Texts{});
    }
    EXPECT_EQ(ownItems.calls, (Texts{"warn 3", "warn 4"}));
    EXPECT_TRUE(store->requests.empty());
}

TEST_F(ItemWriterTest, AFailedCommitRefusesEveryStoredItemOfTheRecord) {
    set({{"melody", "1"}, {"key-1", "1"}}, true);
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(directory.file("store.db").c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other,
                           "CREATE TRIGGER stop BEFORE UPDATE ON \"Keys\" "
                           "BEGIN SELECT RAISE(ROLLBACK, 'worn out'); END",
                           nullptr, nullptr, nullptr),
              SQLITE_OK);
    sqlite3_close(other);
    observer.told.clear();
    EXPECT_EQ(set({{"melody", "2"}, {"plain", "2"}, {"key-1", "2"}, {"lazy", "2"}}, false),
              (Texts{"melody: Unknown", "key-1: Unknown"}));
    EXPECT_EQ(get("melody"), "1");
    EXPECT_EQ(get("key-1"), "1");
    EXPECT_EQ(observer.told, Texts{"plain=2 lazy=2"});
}

TEST_F(ItemWriterTest, OwnersRefuseSinglyAndInBatches) {
    TestAgent single;
    TestAgent bulk;
    registry.addAgent("EagerMgmtId", {&single, false});
    registry.addAgent("LazyMgmtId", {&bulk, true});
    int batches = 0;
    bulk.onSet = [&batches](ManageableData& batch) {
        ++batches;
        EXPECT_EQ(batch.rootIds(), (Texts{"lazy", "lazy-2"}));
        batch.addRejectReason("lazy-2", "//*", "out of range");
        return false;
    };
    EXPECT_EQ(set({{"lazy", "1"}, {"eager", "2"}, {"lazy-2", "3"}}, false),
              Texts{"lazy-2: out of range"});
    EXPECT_EQ(batches, 1);
    EXPECT_EQ(observer.told.back(), "lazy=1 eager=2");

    single.onSet = [](ManageableData&) -> bool { throw std::runtime_error("gone"); };
    bulk.onSet = [](ManageableData& batch) {
        batch.clearAll();
        return false;
    };
    EXPECT_EQ(set({{"lazy", "1"}, {"eager", "2"}, {"lazy-2", "3"}}, false),
              (Texts{"eager: Unknown", "lazy: unknown", "lazy-2: unknown"}));
}

TEST_F(ItemWriterTest, AnOwnerMayCallBackWhileAWriteHoldsTheRegistry) {
    TestAgent owner;
    registry.addAgent("LazyMgmtId", {&owner, false});
    owner.onSet = [this](ManageableData& record) {
        if (record.getRootId() == "lazy") {
            EXPECT_EQ(notifier.announce(recordOf({"lazy-2=announced"}), notifier.begin()), 1U);
            EXPECT_EQ(set({{"volume", "5"}, {"plain", "inner"}}, true), Texts{});
            registry.addObserver("melody", {&observer, false});
            EXPECT_TRUE(observer.told.empty()) << "nobody is told while the registry is held";
        }
        return true;
    };
    EXPECT_EQ(set({{"lazy", "1"}, {"melody", "2"}}, true), Texts{});
    EXPECT_EQ(observer.told,
              (Texts{"lazy-2=announced", "volume=5 plain=inner", "melody=2", "lazy=1 melody=2"}));
    EXPECT_FALSE(registry.semaphore().isMine());
}

TEST_F(ItemWriterTest, WhatAnOwnerAnnouncesWithoutEndWithinAWriteDoesNotPileUp) {
    constexpr std::size_t kAnnounced = 1000;
    TestAgent owner;
    registry.addAgent("LazyMgmtId", {&owner, true});
    std::size_t mostWaiting = 0;
    owner.onSet = [&](ManageableData& /*record*/) {
        for (std::size_t number = 1; number <= kAnnounced; ++number) {
            ManageableData announced = recordOf({"lazy-2=" + std::to_string(number)});
            notifier.notify(announced, notifier.begin());
            mostWaiting = std::max(mostWaiting, number - observer.told.size());
        }
        return true;
    };
    EXPECT_EQ(set({{"lazy", "1"}, {"melody", "2"}}, true), Texts{});
    EXPECT_LT(mostWaiting, 100U);
    ASSERT_EQ(observer.told.size(), kAnnounced + 1);
    for (std::size_t number = 1; number <= kAnnounced; ++number) {
        EXPECT_EQ(observer.told[number - 1], "lazy-2=" + std::to_string(number));
    }
}

TEST_F(ItemWriterTest, AnOwnerCannotRefuseWhatItWasNotSent) {
    TestAgent owner;
    owner.onSet = [](ManageableData& record) {
        record.addRejectReason("melody", "//*", "foreign");
        if (record.rootIds().size() > 1) {
            record.addRejectReason("lazy-2", "//*", "no");
        }
        return false;
    };
    registry.addAgent("EagerMgmtId", {&owner, false});
    registry.addAgent("LazyMgmtId", {&owner, true});
    EXPECT_EQ(set({{"melody", "1"}, {"eager", "2"}, {"lazy", "3"}, {"lazy-2", "4"}}, false),
              (Texts{"eager: Unknown", "lazy-2: no"}));
    EXPECT_EQ(observer.told, Texts{"melody=1 lazy=3"});
}

}  // namespace
}  // namespace vireo::test
