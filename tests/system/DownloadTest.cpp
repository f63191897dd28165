#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>

#include "support/FtpServer.h"
#include "support/RunningPhone.h"

namespace vireo::test {
namespace {

std::string contents(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// A WAVE file of silence: 8000 samples of 8 bits in a second.
std::string silence(std::uint32_t samples) {
    const auto number = [](std::uint32_t value, int bytes) {
        std::string text;
        for (int i = 0; i < bytes; ++i) {
            text += static_cast<char>(value >> (8 * i));
        }
        return text;
    };
    return "RIFF" + number(36 + samples, 4) + "WAVEfmt " + number(16, 4) + number(1, 2) +
           number(1, 2) + number(8000, 4) + number(8000, 4) + number(1, 2) + number(8, 2) + "data" +
           number(samples, 4) + std::string(samples, '\x80');
}

std::string image(const std::string& variant, std::size_t size) {
    return "VIREO-IMAGE 1 " + variant + " " + std::to_string(size) + "\n" + std::string(size, 'i');
}

/// A phone and an FTP server that it is set up for.
class DownloadSystem : public testing::Test {
protected:
    void SetUp() override {
        if (!FtpServer::isInstalled()) {
            GTEST_SKIP() << "there is no pyftpdlib on this machine";
        }
        std::filesystem::create_directories(home());
        m_gate = m_directory.file("gate");
        ASSERT_EQ(::mkfifo(m_gate.c_str(), 0600), 0);
        put("bell.wav", silence(20000));
        put("small.png", std::string(2000, 'p'));
        put("large.png", std::string(300001, 'p'));
        put("cut.wav", silence(20000).substr(0, 9000));
        put("image", image("desk-1", 100000));
        put("foreign", image("desk-2", 100000));
    }

    /// With `hold`, each file stops after so many bytes until `openGate`.
    void serve(long hold = 0) {
        m_server.emplace(m_directory.path().string(), "", hold, hold > 0 ? m_gate : "");
        set({"dl-ftp-addr=127.0.0.1", "dl-ftp-port=" + m_server->port(),
             "dl-ftp-path=", "dl-ftp-username=a@b", "dl-ftp-password=p/w:#"});
    }
    void openGate() { ::close(::open(m_gate.c_str(), O_WRONLY | O_CLOEXEC)); }
    void set(std::vector<std::string> items) {
        items.insert(items.begin(), "set");
        const Outcome written = phone.ctl(items);
        ASSERT_EQ(written.exitCode, 0) << written.err;
    }
    std::string valueOf(const std::string& tag) {
        const std::string line = phone.ctl({"get", tag}).out;
        return line.substr(0, line.size() - 1).substr(tag.size() + 3);
    }
    std::filesystem::path home() const { return m_directory.path() / "home"; }
    void put(const std::string& name, const std::string& bytes) const {
        std::ofstream(home() / name, std::ios::binary) << bytes;
    }
    std::string stored(const std::string& path) const {
        return phone.root() + "/data/vireo/" + path;
    }
    std::vector<std::string> command(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), {VIREOCTL, "--socket", phone.socket()});
        return arguments;
    }

    RunningPhone phone;

private:
    TemporaryDirectory m_directory;
    std::string m_gate;
    std::optional<FtpServer> m_server;
};

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

TEST_F(DownloadSystem, AnImageIsFollowedToTheEndOfItsBurnAndAForeignOneIsNotBurnt) {
    serve();
    set({"dl-app-file=foreign"});
    const Outcome foreign = phone.ctl({"download", "swBind"});
    EXPECT_EQ(foreign.exitCode, 1);
    EXPECT_TRUE(foreign.out.ends_with("swBind: failed\n")) << foreign.out;
    EXPECT_NE(foreign.err.find("not burnt"), std::string::npos) << foreign.err;
    EXPECT_EQ(valueOf("dl-app-last-status"), "2");

    set({"dl-app-file=image"});
    const Outcome burnt = phone.ctl({"download", "swBind"});
    EXPECT_EQ(burnt.exitCode, 0) << burnt.err;
    EXPECT_NE(burnt.out.find("burning "), std::string::npos) << burnt.out;
    EXPECT_TRUE(burnt.out.ends_with("swBind: " + stored("image") + "\n")) << burnt.out;
    EXPECT_EQ(contents(phone.root() + "/flash/software.img"), image("desk-1", 100000));
}

}  // namespace
}  // namespace vireo::test
