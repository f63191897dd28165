#include <filesystem>
#include <functional>
#include <sstream>

#include "support/Enclosure.h"
#include "support/RunningPhone.h"

namespace vireo::test {
namespace {

namespace fs = std::filesystem;
using Change = std::function<void(const RunningPhone&)>;

void replaceIn(const std::string& file, const std::string& from, const std::string& to) {
    std::string text = readFile(file);
    const std::size_t at = text.find(from);
    ASSERT_NE(at, std::string::npos) << from;
    writeFile(file, text.replace(at, from.size(), to));
}

/// How many lines hold `part`.
long lines(const std::string& text, const std::string& part) {
    std::istringstream stream(text);
    long count = 0;
    for (std::string line; std::getline(stream, line);) {
        count += line.find(part) != std::string::npos ? 1 : 0;
    }
    return count;
}

/// Reads and writes one item until the answer is as wanted; every attempt must be answered.
bool becomesWritable(const RunningPhone& phone, const std::string& value) {
    for (int i = 0; i < 500; ++i) {
        const Outcome outcome = phone.ctl({"set", "ringer-melody=" + value});
        if (outcome.exitCode == 0) {
            return true;
        }
        EXPECT_EQ(outcome.exitCode, 1) << outcome.err;
    }
    return false;
}

void bringStoreBack(const RunningPhone& phone) {
    fs::rename(phone.config("away"), phone.config("store.xml"));
}

struct Case {
    const char* name;
    Change damage;
    std::vector<std::string> line;  ///< parts of the one log line that says it
    const char* answer;             ///< to `get ringer-melody` and `get language`
    Change repair = nullptr;        ///< afterwards the item is written, with no restart
};

TEST(BrokenStart, EveryMessageIsAnsweredAndOneLineSaysWhatIsWrong) {
    const std::vector<Case> cases{
        {"no vcmsInit.xml",
         [](const RunningPhone& phone) { fs::remove(phone.config("vcmsInit.xml")); },
         {"vcmsInit.xml: No such file"},
         ""},
        {"an import with a syntax error",
         [](const RunningPhone& phone) {
             replaceIn(phone.config("MediaItems.xml"), "<item>", "<itm>");
         },
         {"import of \"MediaItems.xml\" failed"},
         "ringer-melody = melody-1\nlanguage = en\n"},
        {"an item map with a missing schema element",
         [](const RunningPhone& phone) {
             const std::string file = phone.config("OwnItems.xml");
             const std::string text = readFile(file);
             const std::size_t begin =
                 text.find("<schema>", text.find("<rootId>ringer-melody</rootId>"));
             const std::size_t end = text.find("</schema>", begin) + 9;
             writeFile(file, text.substr(0, begin) + text.substr(end));
         },
         {"a row of ", "it begins with ringer-melody"},
         "language = en\n"},
        {"no store.xml, and then it comes",
         [](const RunningPhone& phone) {
             fs::rename(phone.config("store.xml"), phone.config("away"));
         },
         {"STORE CLOSED", "store.xml: No such file"},
         "",
         bringStoreBack},
        {"a bad store.xml",
         [](const RunningPhone& phone) {
             fs::copy(phone.config("store.xml"), phone.config("away"));
             writeFile(phone.config("store.xml"), "<store><table/></store>");
         },
         {"STORE CLOSED", "store.xml", "a table without a name"},
         "",
         bringStoreBack},
        {"no way to the store, and then there is one",
         [](const RunningPhone& phone) { writeFile(phone.root() + "/data", "x"); },
         {"STORE CLOSED", "Not a directory"},
         "",
         [](const RunningPhone& phone) { fs::remove(phone.root() + "/data"); }},
        {"a damaged store",
         [](const RunningPhone& phone) {
             // The log alone would bring everything back.
             for (const char* suffix : {"", "-wal"}) {
                 writeFile(phone.storeFile() + suffix, std::string(5000, 'g'));
             }
         },
         {"STORE DAMAGED", "store.db.damaged-1"},
         "ringer-melody = melody-1\nlanguage = en\n",
         [](const RunningPhone&) {}},
        {"no configuration directory",
         [](const RunningPhone& phone) { fs::remove_all(phone.config("")); },
         {"cannot read the configuration directory"},
         ""},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.name);
        RunningPhone phone{RunningPhone::Prepared()};
        fs::create_directories(phone.root());
        test.damage(phone);
        phone.start({"--store-retry-ms", "0"});
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(phone.ctl({"get", "ringer-melody", "language"}).out, test.answer);
        }
        const Outcome call = phone.ctl({"call", "findSchemaName", "nodeId:string=nothing"});
        EXPECT_NE(call.exitCode, 3) << call.err;
        if (test.repair) {
            test.repair(phone);
            EXPECT_TRUE(becomesWritable(phone, "repaired"));
            EXPECT_EQ(phone.ctl({"get", "ringer-melody"}).out, "ringer-melody = repaired\n");
        }
        phone.stop();
        const std::string log = phone.log();
        for (const std::string& part : test.line) {
            EXPECT_EQ(lines(log, part), 1) << part << "\n" << log;
        }
    }
}

class BrokenDisk : public ::testing::Test {
protected:
    void SetUp() override {
        if (!Enclosure::isPossible()) {
            GTEST_SKIP() << "the kernel lets no mount namespace be made here";
        }
    }

    /// The process inside of the enclosure: the wrapper's only child, or the wrapper itself if that
    /// has become it.
    static pid_t inside(const RunningPhone& phone) {
        const Outcome child =
            ChildProcess::run({"pgrep", "-P", std::to_string(phone.process->pid())});
        return child.exitCode == 0 ? static_cast<pid_t>(std::stol(child.out))
                                   : phone.process->pid();
    }
    static void stop(const RunningPhone& phone) {
        ::kill(inside(phone), SIGTERM);
        phone.process->finish();
    }
};

TEST_F(BrokenDisk, AReadOnlyRootIsReadAlsoWhatStandsInTheLogAlone) {
    for (const bool isKilled : {true, false}) {
        SCOPED_TRACE(isKilled ? "the last one was killed" : "the last one was stopped");
        RunningPhone phone;
        phone.set({"ringer-melody=kept", "key-label-1=Home"});
        phone.process->kill(isKilled ? SIGKILL : SIGTERM);
        phone.process->finish();
        ASSERT_EQ(fs::exists(phone.storeFile() + "-wal"), isKilled);
        phone.wrap(Enclosure::readOnlyAtFirst(phone.root()));
        phone.start({"--store-retry-ms", "0"});
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(phone.ctl({"get", "ringer-melody", "key-label-1", "language"}).out,
                      "ringer-melody = kept\nkey-label-1 = Home\nlanguage = en\n");
            const Outcome refused = phone.ctl({"set", "ringer-melody=new"});
            EXPECT_EQ(refused.exitCode, 1) << refused.out;
        }
        ASSERT_TRUE(Enclosure::makeWritable(phone.process->pid(), phone.root()));
        EXPECT_TRUE(becomesWritable(phone, "new"));
        EXPECT_EQ(phone.ctl({"get", "ringer-melody", "key-label-1"}).out,
                  "ringer-melody = new\nkey-label-1 = Home\n");
        stop(phone);
        phone.wrap({});
        phone.start();
        EXPECT_EQ(phone.ctl({"get", "ringer-melody", "key-label-1"}).out,
                  "ringer-melody = new\nkey-label-1 = Home\n");
        const std::string log = phone.log();
        EXPECT_EQ(lines(log, "STORE READ-ONLY"), 1) << log;
        EXPECT_EQ(lines(log, phone.storeFile() + ": Read-only file system"), 1) << log;
        EXPECT_EQ(lines(log, "STORE OPEN"), 1) << log;
    }
}

TEST_F(BrokenDisk, AFullDiskRefusesWritesUntilThereIsRoomAndLosesNothing) {
    for (const bool hasStore : {false, true}) {
        SCOPED_TRACE(hasStore ? "with a store" : "without a store");
        RunningPhone phone{RunningPhone::Prepared()};
        const std::string seed = phone.file("seed");
        std::string before = "ringer-melody = melody-1\n";
        fs::create_directories(phone.root());
        if (hasStore) {
            phone.start();
            before = "ringer-melody = kept\n";
            phone.set({"ringer-melody=kept"});
            phone.crash();
        }
        fs::rename(phone.root(), seed);
        fs::create_directories(phone.root());
        phone.wrap(Enclosure::fullDisk(phone.root(), seed));
        phone.start({"--store-retry-ms", "0"});
        const std::string large(20000, 'x');
        for (int round = 0; round < 2; ++round) {
            SCOPED_TRACE(round);
            for (int i = 0; i < 3; ++i) {
                EXPECT_EQ(phone.ctl({"set", "ringer-melody=" + large}).exitCode, 1);
                EXPECT_EQ(phone.ctl({"get", "ringer-melody"}).out, before);
            }
            ASSERT_TRUE(Enclosure::makeRoom(inside(phone), phone.root()));
            before = "ringer-melody = room-" + std::to_string(round) + "\n";
            EXPECT_TRUE(becomesWritable(phone, "room-" + std::to_string(round)));
            EXPECT_EQ(phone.ctl({"get", "ringer-melody"}).out, before);
            Enclosure::fill(inside(phone), phone.root());
        }
        stop(phone);
        const std::string log = phone.log();
        EXPECT_EQ(lines(log, "STORE READ-ONLY") + lines(log, "STORE NOT WRITTEN"), 2) << log;
        EXPECT_EQ(lines(log, "STORE OPEN") + lines(log, "STORE WRITTEN AGAIN"), 2) << log;
    }
}

TEST_F(BrokenDisk, ALogFileThatCannotBeWrittenStopsNothing) {
    RunningPhone phone{RunningPhone::Prepared()};
    fs::create_directories(phone.root());
    fs::create_directories(phone.file("empty"));
    phone.wrap(Enclosure::fullDisk(phone.root(), phone.file("empty")));
    const std::string log = phone.root() + "/log";
    phone.start({"--store-retry-ms", "0", "--log-level", "5"}, log);
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(phone.ctl({"get", "language"}).out, "language = en\n");
    }
    ASSERT_TRUE(Enclosure::makeRoom(inside(phone), phone.root()));
    EXPECT_TRUE(becomesWritable(phone, "room"));
    EXPECT_EQ(phone.ctl({"set", "vlan-id=1"}).exitCode, 1);
    EXPECT_GE(lines(readFile(Enclosure::seenBy(inside(phone), log)), "vlan-id"), 1);
    ::kill(inside(phone), SIGTERM);
    EXPECT_EQ(lines(phone.process->finish().err, "log lines are lost"), 1);

    phone.wrap({});
    phone.start({}, "/proc/none/log");
    EXPECT_EQ(phone.ctl({"get", "language"}).exitCode, 0);
    phone.process->kill(SIGTERM);
    EXPECT_EQ(lines(phone.process->finish().err, "cannot write the log file"), 1);
}

TEST_F(BrokenDisk, OneRootServesOneServiceHoweverItIsMounted) {
    for (const bool firstIsReadOnly : {false, true}) {
        for (const bool secondIsReadOnly : {false, true}) {
            RunningPhone phone{RunningPhone::Prepared()};
            fs::create_directories(phone.root());
            const auto wrapperOf = [&](bool isReadOnly) {
                return isReadOnly ? Enclosure::readOnly(phone.root()) : std::vector<std::string>{};
            };
            phone.wrap(wrapperOf(firstIsReadOnly));
            phone.start();
            std::vector<std::string> second = wrapperOf(secondIsReadOnly);
            second.insert(second.end(), {VIREOD, "--config", VIREO_CONFIG, "--root", phone.root(),
                                         "--socket", phone.file("other/s")});
            const Outcome outcome = ChildProcess::run(second);
            EXPECT_EQ(outcome.exitCode, 1);
            EXPECT_NE(outcome.err.find(phone.root() + " is locked by "), std::string::npos)
                << outcome.err;
            stop(phone);
        }
    }
}

}  // namespace
}  // namespace vireo::test
