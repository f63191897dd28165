#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Watch.h"
#include "terminal/StopSignal.h"
#include "unit/client/CommandOutput.h"
#include "unit/client/ScriptedPeer.h"

namespace vireo {
namespace {

using std::chrono::milliseconds;

// Takes the next call, which is to be of this method and item, and answers it.
void answer(PeerStream& stream, const std::string& method, const std::string& tag, bool result) {
    stream.send(FrameKind::eReply, stream.take({";" + method, ";" + tag}),
                encoded(resultReply(method, result)));
}

// What a collection has for members.
constexpr const char* kMember = "<record><document name=\"m\" schema=\"m\">1</document></record>";

void tell(PeerStream& stream, const std::vector<std::pair<std::string, std::string>>& items) {
    ManageableData record;
    for (const auto& [tag, value] : items) {
        record.populate(tag, value);
    }
    stream.sendToAgent(FrameKind::eNotification, 0, "manageableDataChanged:" + record.serialize());
}

void answerRead(PeerStream& stream, const char* record) {
    stream.reply(recordReply("getData", true, record));
}

struct Row {
    const char* description;
    Watch::Options options;
    Form form;
    ScriptedPeer::Script script;
    ExitCode code;
    const char* out;
    const char* errors;
};

constexpr const char* kWatching = "vireoctl: watching as client-1\n";

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
    const Row rows[] = {
        {"a line for each item", both, Form::eLines, untilCounted, ExitCode::eDone,
         "a = 1\nb = 2\na = 3\n", kWatching},
        {"an object for each record", both, Form::eJson, untilCounted, ExitCode::eDone,
         "{\"items\":{\"a\":\"1\"}}\n{\"items\":{\"b\":\"2\",\"a\":\"3\"}}\n", kWatching},
        {"the service goes", both, Form::eLines,
         [&](PeerStream& stream) {
             observeBoth(stream);
             tell(stream, {{"a", "1"}});
             stream.close();
         },
         ExitCode::eNotReached, "a = 1\n",
         "vireoctl: watching as client-1\nvireoctl: the service closed the connection\n"},
        {"an item that is not there", both, Form::eLines,
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
        {"a time that is over, and a collection, which is given up by its members",
         {{"c"}, true, {}, milliseconds(1)},
         Form::eLines,
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
         kWatching},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.description);
        ScriptedPeer peer([&row](PeerStream& stream) {
            row.script(stream);
            EXPECT_FALSE(stream.read()) << "one call too many";
        });
        CommandOutput output(row.form);
        const StopSignal stop;
        Watch watch(row.options, output.printer(), output.out, output.errors);
        EXPECT_EQ(watch.run(optionsFor(peer), stop), row.code);
        EXPECT_EQ(output.out.str(), row.out);
        EXPECT_EQ(output.errors.str(), row.errors);
    }
}

}  // namespace
}  // namespace vireo
