#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "JsonPrinter.h"
#include "TextPrinter.h"
#include "Watch.h"
#include "terminal/StopSignal.h"
#include "unit/client/ScriptedPeer.h"

namespace vireo {
namespace {

using std::chrono::milliseconds;

// Takes the next call, which is to be of this method and item, and answers it.
void answer(PeerStream& stream, const std::string& method, const std::string& tag, bool result) {
    const auto request = stream.read();
    ASSERT_TRUE(request) << method << ' ' << tag;
    EXPECT_NE(request->payload.find(";" + method), std::string::npos) << request->payload;
    EXPECT_NE(request->payload.find(";" + tag), std::string::npos) << request->payload;
    Method reply(method, Method::eResponse);
    reply.addBoolParameter("result", Parameter::eOut, result);
    stream.send(FrameKind::eReply, request->header.correlation, encoded(reply));
}

// What a collection has for members.
constexpr const char* kMember = "<record><document name=\"m\" schema=\"m\">1</document></record>";

void answerRead(PeerStream& stream, const char* record) {
    Method reply("getData", Method::eResponse);
    reply.addBoolParameter("result", Parameter::eOut, true);
    reply.addStringParameter("manageableData", Parameter::eOut, record);
    stream.reply(reply);
}

void tell(PeerStream& stream, const std::vector<std::pair<std::string, std::string>>& items) {
    ManageableData record;
    for (const auto& [tag, value] : items) {
        record.populate(tag, value);
    }
    stream.sendToAgent(FrameKind::eNotification, 0, "manageableDataChanged:" + record.serialize());
}

struct Row {
    const char* description;
    Watch::Options options;
    ScriptedPeer::Script script;  // after the welcome
    ExitCode code;
    const char* out;
    const char* errors;
};

void expectRow(const Row& row, bool json) {
    ScriptedPeer peer([&row](PeerStream& stream) {
        stream.welcome("watch-1");
        row.script(stream);
        EXPECT_FALSE(stream.read()) << "one call too many";
    });
    LocalMgmtClient::Options connection;
    connection.socketPath = peer.socketPath();
    std::ostringstream out;
    std::ostringstream errors;
    TextPrinter text(out, errors);
    JsonPrinter jsonPrinter(out, errors);
    AnswerPrinter& printer = json ? static_cast<AnswerPrinter&>(jsonPrinter) : text;
    const StopSignal stop;
    EXPECT_EQ(Watch(row.options, printer, out, errors).run(connection, stop), row.code)
        << row.description;
    EXPECT_EQ(out.str(), row.out) << row.description;
    EXPECT_EQ(errors.str(), row.errors) << row.description;
}

TEST(Watch, PrintsWhatItIsToldAndStopsObservingAtTheEnd) {
    const Watch::Options both{{"a", "b"}, false, 2, {}};
    const auto observeBoth = [](PeerStream& stream) {
        answer(stream, "stopObservingData", "a", true);
        answer(stream, "stopObservingData", "all-data", true);
        answer(stream, "stopObservingData", "b", true);
        answer(stream, "observeDataBulkData", "a", true);
        answer(stream, "observeDataBulkData", "b", true);
    };
    const auto untilCounted = [&](PeerStream& stream) {
        observeBoth(stream);
        tell(stream, {{"a", "1"}});
        tell(stream, {{"left", "1"}});
        answer(stream, "stopObservingData", "left", true);
        tell(stream, {{"b", "2"}, {"left", "1"}, {"a", "3"}});
        tell(stream, {{"a", "one too many"}});
        answer(stream, "stopObservingData", "left", true);
        answer(stream, "stopObservingData", "a", true);
        answer(stream, "stopObservingData", "b", true);
    };
    expectRow({"a line for each item", both, untilCounted, ExitCode::eDone, "a = 1\nb = 2\na = 3\n",
               "vireoctl: watching as watch-1\n"},
              false);
    expectRow({"an object for each record", both, untilCounted, ExitCode::eDone,
               "{\"items\":{\"a\":\"1\"}}\n{\"items\":{\"b\":\"2\",\"a\":\"3\"}}\n",
               "vireoctl: watching as watch-1\n"},
              true);
    expectRow({"the service goes", both,
               [&](PeerStream& stream) {
                   observeBoth(stream);
                   tell(stream, {{"a", "1"}});
                   stream.close();
               },
               ExitCode::eNotReached, "a = 1\n",
               "vireoctl: watching as watch-1\nvireoctl: the service closed the connection\n"},
              false);
    expectRow({"an item that is not there", both,
               [](PeerStream& stream) {
                   answer(stream, "stopObservingData", "a", true);
                   answer(stream, "stopObservingData", "all-data", true);
                   answer(stream, "stopObservingData", "b", false);
                   answerRead(stream, "<record></record>");
                   answer(stream, "observeDataBulkData", "a", true);
                   answer(stream, "observeDataBulkData", "b", false);
                   answer(stream, "stopObservingData", "a", true);
               },
               ExitCode::eRefused, "", "b: cannot be observed (no such item)\n"},
              false);
    expectRow({"a time that is over, and a collection, which is given up by its members",
               {{"c"}, true, {}, milliseconds(1)},
               [](PeerStream& stream) {
                   answer(stream, "stopObservingData", "all-data", true);
                   answer(stream, "stopObservingData", "c", false);
                   answerRead(stream, kMember);
                   answer(stream, "stopObservingData", "m", true);
                   answer(stream, "observeDataBulkData", "c", true);
                   answer(stream, "stopObservingData", "c", false);
                   answerRead(stream, kMember);
                   answer(stream, "stopObservingData", "m", true);
               },
               ExitCode::eDone,
               "",
               "vireoctl: watching as watch-1\n"},
              false);
}

}  // namespace
}  // namespace vireo
