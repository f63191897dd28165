#include "support/ItemCalls.h"

#include <gtest/gtest.h>

namespace vireo::test {
namespace {

ItemAnswer answerOf(CallStatus status, bool result, ManageableData record) {
    EXPECT_EQ(status, CallStatus::eDone) << describe(status);
    ItemAnswer answer;
    answer.result = result;
    answer.items = itemsOf(record);
    answer.refusals = refusalsOf(record);
    answer.record = std::move(record);
    return answer;
}

}  // namespace

std::string ItemAnswer::value(const std::string& tag) const {
    std::string text;
    return record.interogate(tag, tag, text) ? text : "none";
}

ItemAnswer readItems(LocalMgmtClient& client, const Words& tags) {
    ManageableData record = requestFor(tags);
    bool result = false;
    const CallStatus status = client.getData(record, result);
    return answerOf(status, result, std::move(record));
}

ItemAnswer writeItems(LocalMgmtClient& client, const Words& assignments) {
    ManageableData record = recordOf(assignments);
    bool result = false;
    const CallStatus status = client.setData(record, result);
    return answerOf(status, result, std::move(record));
}

int announceItems(LocalMgmtClient& client, const Words& assignments) {
    ManageableData record = recordOf(assignments);
    int observers = -1;
    EXPECT_EQ(client.manageableDataChanged(record, observers), CallStatus::eDone);
    EXPECT_TRUE(record.rejections().empty());
    return observers;
}

}  // namespace vireo::test
