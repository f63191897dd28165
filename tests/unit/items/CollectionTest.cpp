#include "unit/items/ItemHouse.h"

namespace vireo::test {
namespace {

class CollectionTest : public ItemHouse {
protected:
    CollectionTest() {
        load();
        registry.addObserver(kAllData, {&observer, false});
    }

    /// Writes `ids` with values for some items beside them; refusals as "tag: reason".
    Texts write(const Texts& ids, const std::vector<std::pair<std::string, std::string>>& values,
                bool expectedResult) {
        ManageableData record;
        for (const auto& [tag, value] : values) {
            record.populate(tag, tag, value);
            record.putSchema(catalogue.master().getSchema("text"));
        }
        ManageableData request;
        for (const auto& [tag, value] : values) {
            request.copyDocument(tag, record);
        }
        for (const std::string& id : ids) {
            request.addRootId(id, nullptr);
        }
        observer.told.clear();
        EXPECT_EQ(writer.setData(request), expectedResult);
        EXPECT_EQ(request.rootIds(), ids) << "the caller's list stays";
        return refusalsOf(request);
    }

    /// Reads `ids`; the values that stand in the answer, as "tag=value".
    Texts read(const Texts& ids, bool expectedResult) {
        ManageableData record = requestFor(ids);
        EXPECT_EQ(reader.getData(record), expectedResult);
        EXPECT_EQ(record.rootIds(), ids) << "the caller's list stays";
        Texts values;
        for (const char* tag :
             {"melody", "lazy", "volume", "guarded", "key-1", "plain", "eager", "nothing"}) {
            std::string value;
            if (record.interogate(tag, tag, value)) {
                values.push_back(std::string(tag) + "=" + value);
            }
        }
        return values;
    }

    TestAgent observer;
};

TEST_F(CollectionTest, StandsForItsItemsInOrderWhateverContainsWhat) {
    const struct {
        const char* collection;
        Texts items;
    } cases[] = {
        {"pair", {"melody", "lazy"}},
        {"nest", {"guarded", "melody", "lazy", "volume"}},
        // "plain" is an item too, and as a member it stays one.
        {"loop", {"key-1", "guarded", "melody", "lazy", "volume", "plain"}},
        {"odd", {"nothing", "melody", "eager"}},
        // Their lists have their own names, which makes no items of them.
        {"left", {"melody", "lazy"}},
        {"right", {"melody", "lazy"}},
    };
    for (const auto& [collection, items] : cases) {
        EXPECT_EQ(collections.items(collection), items) << collection;
    }
    EXPECT_TRUE(collections.empty("hollow"));
}

TEST_F(CollectionTest, AReadAnswersEveryItemBesideTheAskedNames) {
    EXPECT_EQ(read({"pair"}, true), (Texts{"melody=7", "lazy=preset"}));
    EXPECT_EQ(read({"pair", "key-1"}, true), (Texts{"melody=7", "lazy=preset", "key-1="}));
    EXPECT_EQ(read({"pair", "overlap"}, true), (Texts{"melody=7", "lazy=preset", "volume="}));
    EXPECT_EQ(read({"loop"}, true), (Texts{"melody=7", "lazy=preset", "volume=", "guarded=on",
                                           "key-1=", "plain=preset"}));
    EXPECT_EQ(read({"odd"}, false), (Texts{"melody=7", "eager="}));
    EXPECT_EQ(read({"hollow"}, false), Texts{});
    EXPECT_EQ(read({"plain"}, true), Texts{"plain=preset"}) << "an item before a collection";
    EXPECT_EQ(read({"left", "right"}, true), (Texts{"melody=7", "lazy=preset"}));
}

TEST_F(CollectionTest, AWriteTellsOfEachItemOncePerCollection) {
    EXPECT_EQ(write({"pair"}, {{"melody", "1"}, {"lazy", "2"}}, true), Texts{});
    EXPECT_EQ(observer.told, (Texts{"melody=1", "lazy=2"}));

    EXPECT_EQ(write({"pair", "key-1"}, {{"melody", "3"}, {"lazy", "4"}, {"key-1", "5"}}, true),
              Texts{});
    EXPECT_EQ(observer.told, (Texts{"melody=3", "lazy=4", "key-1=5"}));

    EXPECT_EQ(write({"pair", "overlap"}, {{"melody", "6"}, {"lazy", "7"}, {"volume", "8"}}, true),
              Texts{});
    EXPECT_EQ(observer.told, (Texts{"melody=6", "lazy=7", "lazy=7", "volume=8"}));

    EXPECT_EQ(write({"loop"}, {{"melody", "9"}, {"key-1", "10"}, {"plain", "11"}}, true), Texts{});
    EXPECT_EQ(observer.told, (Texts{"key-1=10", "melody=9", "plain=11"}));
    EXPECT_EQ(read({"loop"}, true),
              (Texts{"melody=9", "lazy=7", "volume=8", "guarded=on", "key-1=10", "plain=11"}));
}

TEST_F(CollectionTest, RefusalsOfItemsReachTheCallerAndNoObserver) {
    ownItems.busy = 1;
    EXPECT_EQ(write({"nest"}, {{"guarded", "off"}, {"melody", "1"}}, false),
              Texts{"guarded: Change not allowed: Phone is busy!"});
    EXPECT_EQ(observer.told, Texts{"melody=1"});
    EXPECT_EQ(write({"odd"}, {{"nothing", "1"}, {"melody", "2"}, {"eager", "3"}}, false),
              Texts{"eager: Service not registered"});
    EXPECT_EQ(observer.told, (Texts{"nothing=1", "melody=2"}))
        << "an unknown item is not refused, so it is told";
    EXPECT_EQ(get("guarded"), "on");
}

TEST_F(CollectionTest, IsNotWrittenBehindAnItemThatFailed) {
    EXPECT_EQ(write({"eager", "pair"}, {{"eager", "1"}, {"melody", "2"}}, false),
              Texts{"eager: Service not registered"});
    EXPECT_EQ(get("melody"), "7");
    EXPECT_EQ(write({"pair", "eager"}, {{"eager", "1"}, {"melody", "2"}}, false),
              Texts{"eager: Service not registered"});
    EXPECT_EQ(get("melody"), "2");
}

TEST_F(CollectionTest, WithoutValuesOrWithOneOfItsOwnItIsRefused) {
    EXPECT_EQ(write({"pair"}, {{"volume", "1"}}, false), Texts{"pair: Tags missing"});
    EXPECT_EQ(write({"pair"}, {{"pair", "1"}, {"melody", "2"}}, false),
              Texts{"pair: Invalid data"});
    EXPECT_EQ(write({"hollow"}, {{"hollow", "1"}}, false), Texts{});
    EXPECT_EQ(get("melody"), "7");
    EXPECT_EQ(observer.told, Texts{"hollow=1"});
}

}  // namespace
}  // namespace vireo::test
