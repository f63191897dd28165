#include <sqlite3.h>

#include <memory>

#include "support/FullDisk.h"
#include "unit/items/TestAgent.h"
#include "unit/service/ServiceHouse.h"

namespace vireo::test {
namespace {

/// Hands its answer over, and shows what was given by it.
struct PostponableResponse : TestResponse {
    PostponableResponse() : TestResponse(VireoProtocols::DEFAULT) {}
    std::shared_ptr<InvokerResponse> postpone() override {
        later = std::make_shared<TestResponse>(protocolName);
        return later;
    }
    bool isAnswered() const { return sends + (later ? later->sends : 0) > 0; }
    ManageableData record() const {
        Method reply;
        ManageableData record;
        EXPECT_TRUE(
            RpcAdapter::decodeText(later ? later->payload : payload, reply) &&
            record.deserialize(reply.getStringParameter("manageableData", Parameter::eOut)));
        return record;
    }
    std::string refusal() const {
        const auto refusals = record().rejections();
        return refusals.empty() ? "" : refusals.front().reason();
    }

    std::shared_ptr<TestResponse> later;
};

class WriteGroupTest : public ServiceHouse {
protected:
    WriteGroupTest() {
        start();
        service.observeManageableData("all-data", &watcher, false);
    }

    void message(PostponableResponse& response, const char* method, const Words& assignments) {
        Method request(method, Method::eRequest);
        request.addStringParameter("manageableData", Parameter::eInOut,
                                   recordOf(assignments).serialize());
        std::string bytes;
        RpcAdapter::encodeText(request, bytes);
        invoker.handleMessage(&service, bytes.data(), static_cast<int>(bytes.size()), &response);
    }
    std::string valueOf(const std::string& tag) {
        ManageableData record = requestFor({tag});
        EXPECT_TRUE(service.getData(record));
        return record.interogate(tag)->value();
    }
    /// What another process would find.
    std::string committed(const char* column) {
        sqlite3* file = nullptr;
        EXPECT_EQ(sqlite3_open_v2(directory.file("store.db").c_str(), &file, SQLITE_OPEN_READONLY,
                                  nullptr),
                  SQLITE_OK);
        std::string found;
        sqlite3_exec(
            file, (std::string("SELECT ") + column + " FROM Settings").c_str(),
            [](void* out, int, char** texts, char**) {
                *static_cast<std::string*>(out) = texts[0] != nullptr ? texts[0] : "";
                return 0;
            },
            &found, nullptr);
        sqlite3_close(file);
        return found;
    }

    TestAgent watcher;
    PostponableResponse first;
    PostponableResponse second;
};

TEST_F(WriteGroupTest, IsAnsweredAndToldWhenItIsCommitted) {
    message(first, "setData", {"melody=a"});
    message(second, "setData", {"volume=b"});
    EXPECT_EQ(committed("Melody"), "");
    EXPECT_EQ(watcher.told, Words{});
    EXPECT_FALSE(first.isAnswered() || second.isAnswered());
    invoker.endTurn(&service);
    EXPECT_EQ(committed("Melody") + committed("Volume"), "ab");
    EXPECT_EQ(watcher.told, (Words{"melody=a", "volume=b"}));
    EXPECT_EQ(first.later->sends, 1);
    EXPECT_EQ(second.later->sends, 1);
    EXPECT_EQ(first.refusal() + second.refusal(), "");
}

TEST_F(WriteGroupTest, IsRefusedAsAWholeWhenTheCommitFails) {
    message(first, "setData", {"melody=kept"});
    invoker.endTurn(&service);
    watcher.told.clear();
    {
        const FullDisk full;
        message(first, "setData", {"melody=lost"});
        message(second, "setData", {"volume=lost"});
        invoker.endTurn(&service);
    }
    EXPECT_EQ(first.refusal(), "Unknown");
    EXPECT_EQ(second.refusal(), "Unknown");
    EXPECT_EQ(valueOf("melody"), "kept");
    EXPECT_EQ(watcher.told, Words{});
    PostponableResponse again;
    message(again, "setData", {"melody=new"});
    invoker.endTurn(&service);
    EXPECT_EQ(again.refusal(), "");
    EXPECT_EQ(committed("Melody"), "new");
}

TEST_F(WriteGroupTest, EndsBeforeWhateverMightSeeOrHoldItUp) {
    const struct {
        const char* method;
        std::string tag;
        bool ends;
    } rows[] = {
        {"getData", "melody", true},       {"getData", "volume", false},
        {"getData", "pair", true},         {"getData", "nest", true},
        {"setData", "volume", false},      {"retrievePhoneBusyStatus", "", true},
        {"invalidateVCMSCache", "", true},
    };
    int number = 0;
    for (const auto& row : rows) {
        PostponableResponse written;
        message(written, "setData", {"melody=" + std::to_string(++number)});
        PostponableResponse other;
        message(other, row.method, {row.tag + "=" + std::to_string(number)});
        EXPECT_EQ(written.isAnswered(), row.ends) << row.method << " " << row.tag;
        invoker.endTurn(&service);
        EXPECT_TRUE(written.isAnswered());
    }
}

TEST_F(WriteGroupTest, TakesNeitherOtherItemsNorSeveral) {
    message(first, "setData", {"melody=a", "volume=b"});
    EXPECT_EQ(first.sends, 1);
    for (const char* tag : {"plain", "lazy-2", "eager", "pair", "unknown", "software"}) {
        PostponableResponse response;
        message(response, "setData", {std::string(tag) + "=x"});
        EXPECT_EQ(response.sends, 1) << tag;
    }
}

TEST_F(WriteGroupTest, IsAnsweredWhileAnObserverOfAnotherWriteWaits) {
    message(first, "setData", {"melody=a"});
    message(second, "setData", {"volume=b"});
    bool isAnswered = false;
    watcher.onChange = [&](ManageableData& /*record*/) {
        if (!isAnswered) {
            invoker.endTurn(&service);
            isAnswered = second.isAnswered();
        }
        return true;
    };
    invoker.endTurn(&service);
    EXPECT_TRUE(isAnswered);
    EXPECT_EQ(first.later->sends + second.later->sends, 2);
    EXPECT_EQ(watcher.told, (Words{"melody=a", "volume=b"}));
}

TEST_F(WriteGroupTest, IsToldBeforeALaterWriteOfItsItem) {
    message(first, "setData", {"melody=1"});
    ManageableData record = recordOf({"melody=2"});
    EXPECT_TRUE(service.setData(record)) << "commits what is there";
    message(second, "setData", {"melody=3"});
    invoker.endTurn(&service);
    EXPECT_EQ(watcher.told, (Words{"melody=1", "melody=2", "melody=3"}));
    EXPECT_EQ(committed("Melody"), "3");
}

}  // namespace
}  // namespace vireo::test
