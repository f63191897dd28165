#include "system/DownloadFixture.h"

namespace vireo::test {
namespace {

TEST_F(DownloadSystem, FetchesARingerByTheSettingsAndSaysHowItEnded) {
    serve();
    set({"dl-rng-file=bell.wav"});
    const Outcome fetched = phone.ctl({"download", "ringer"});
    EXPECT_EQ(fetched.exitCode, 0) << fetched.err;
    EXPECT_TRUE(fetched.out.ends_with("ringer: " + stored("ringtones/bell.wav") + "\n"))
        << fetched.out;
    EXPECT_EQ(contents(stored("ringtones/bell.wav")), silence(20000));
    EXPECT_EQ(valueOf("dl-rng-last-status"), "1");
    EXPECT_EQ(valueOf("dl-rng-last-time").size(), std::string("2027-03-01T12:00:00Z").size());
    EXPECT_EQ(phone.ctl({"download-status", "ringer", "bell.wav"}).out, "ringer: 100 %\n");
    EXPECT_EQ(phone.ctl({"download-status", "ringer", "other.wav"}).exitCode, 1);
    EXPECT_EQ(phone.ctl({"validate", "ringer", "bell.wav"}).exitCode, 0);
    EXPECT_EQ(phone.ctl({"validate", "ringer", "none.wav"}).exitCode, 1);
}

TEST_F(DownloadSystem, EveryEndingGivesThePhoneBackForTheNextDownload) {
    serve();
    const struct {
        const char* type;
        const char* infix;
        std::vector<std::string> settings;
    } rows[] = {
        {"images", "pic", {"dl-pic-file=none.png"}},
        {"images", "pic", {"dl-pic-file=large.png"}},
        {"ringer", "rng", {"dl-rng-file=cut.wav"}},
        {"images", "pic", {"dl-pic-file=small.png", "dl-ftp-password=wrong"}},
        {"images", "pic", {"dl-ftp-password=p/w:#", "dl-ftp-port=1"}},
    };
    const std::string port = valueOf("dl-ftp-port");
    for (const auto& row : rows) {
        SCOPED_TRACE(row.settings.back());
        set(row.settings);
        const Outcome failed = phone.ctl({"download", row.type});
        EXPECT_EQ(failed.exitCode, 1);
        EXPECT_TRUE(failed.out.ends_with(std::string(row.type) + ": failed\n")) << failed.out;
        EXPECT_EQ(valueOf("dl-" + std::string(row.infix) + "-last-status"), "2");
        EXPECT_EQ(phone.ctl({"busy"}).out, "busy = 0 (idle)\n");
    }
    EXPECT_FALSE(std::filesystem::exists(stored("images/large.png")));
    EXPECT_FALSE(std::filesystem::exists(stored("ringtones/cut.wav")));
    set({"dl-ftp-port=" + port, "dl-pic-file=small.png"});
    EXPECT_EQ(phone.ctl({"download", "images"}).exitCode, 0);
    EXPECT_EQ(valueOf("dl-pic-last-status"), "1");
}

TEST_F(DownloadSystem, AGivenSourceNeedsNoSettingsAndItsPasswordComesFromAPipe) {
    serve();
    const std::string port = valueOf("dl-ftp-port");
    set({"dl-ftp-addr=", "dl-ftp-password="});
    std::string line = "printf '%s\\n' 'p/w:#' | '" + std::string(VIREOCTL) + "' --socket '" +
                       phone.socket() + "' download images --from ftp --server 127.0.0.1 --port " +
                       port + " --user a@b --password-stdin small.png";
    const Outcome fetched = ChildProcess::run({"/bin/sh", "-c", line});
    EXPECT_EQ(fetched.exitCode, 0) << fetched.err;
    EXPECT_EQ(contents(stored("images/small.png")), std::string(2000, 'p'));
}

TEST_F(DownloadSystem, OneThatIsLeftGoesOnAndNoOtherIsStartedMeanwhile) {
    serve(150000);
    put("half.png", std::string(300000, 'h'));
    set({"dl-pic-file=half.png"});
    ChildProcess first(command({"download", "images"}));
    std::string line;
    while (first.readLine(line) && line == "0 %") {
    }
    const Outcome second = phone.ctl({"download", "images"});
    EXPECT_EQ(second.exitCode, 1);
    EXPECT_EQ(second.out, "images: not started\n");
    first.kill(SIGINT);
    const Outcome left = first.finish();
    EXPECT_EQ(left.exitCode, 1);
    EXPECT_NE(left.err.find("the download goes on"), std::string::npos) << left.err;
    EXPECT_FALSE(std::filesystem::exists(stored("images/half.png")));

    ChildProcess watch(command({"watch", "dl-pic-last-status", "--count", "1"}));
    ASSERT_TRUE(watch.readErrorLine(line));
    EXPECT_NE(line.find("watching"), std::string::npos) << line;
    openGate();
    EXPECT_EQ(watch.finish().out, "dl-pic-last-status = 1\n");
    EXPECT_EQ(std::filesystem::file_size(stored("images/half.png")), 300000U);
}

}  // namespace
}  // namespace vireo::test
