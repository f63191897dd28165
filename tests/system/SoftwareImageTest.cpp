#include <optional>
#include <random>
#include <thread>

#include "support/Effort.h"
#include "support/FtpServer.h"
#include "support/HostileImages.h"
#include "support/RunningPhone.h"

namespace vireo::test {
namespace {

/// A phone, the key that it trusts, and a server with images.
class SoftwareImageTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (!FtpServer::isInstalled()) {
            GTEST_SKIP() << "there is no pyftpdlib on this machine";
        }
        std::filesystem::create_directories(m_directory.path() / "home");
        writeFile(m_phone.root() + "/software-keys/one.pem", keyNumber(1).publicKey().pem());
        m_server.emplace(m_directory.path().string());
        m_phone.set({"dl-ftp-addr=127.0.0.1", "dl-ftp-port=" + m_server->port(), "dl-ftp-path=",
                     "dl-ftp-username=a@b", "dl-ftp-password=p/w:#", "dl-app-file=image"});
    }

    void offer(const std::string& image) const { writeFile(m_directory.file("home/image"), image); }
    std::string software() const { return m_phone.ctl({"software"}).out; }
    void restart() {
        m_phone.stop();
        m_phone.start();
    }
    /// A start that comes to nothing.
    void startInVain(const std::string& socket, const std::vector<std::string>& options = {}) {
        std::vector<std::string> command{VIREOD,         "--config", VIREO_CONFIG, "--root",
                                         m_phone.root(), "--socket", socket};
        command.insert(command.end(), options.begin(), options.end());
        const Outcome outcome = ChildProcess::run(command);
        EXPECT_EQ(outcome.exitCode, 1) << outcome.err;
    }
    /// The next start is from this image.
    void burnAndStop(const std::string& image) {
        offer(image);
        const Outcome burnt = m_phone.ctl({"download", "swBind"});
        EXPECT_EQ(burnt.exitCode, 0) << burnt.err;
        m_phone.stop();
    }
    void runFrom(const std::string& image) {
        burnAndStop(image);
        m_phone.start();
    }
    std::string bank(char letter) const {
        return readFile(m_phone.root() + "/flash/bank-" + letter + ".img");
    }
    long logged(const std::string& part) const {
        const std::string log = m_phone.log();
        long count = 0;
        for (std::size_t at = 0; (at = log.find(part, at)) != std::string::npos; ++at) {
            ++count;
        }
        return count;
    }

    RunningPhone m_phone;
    TemporaryDirectory m_directory;
    std::optional<FtpServer> m_server;
};

TEST_F(SoftwareImageTest, AnImageIsBurntTriedAndConfirmedAndTheNextGoesToTheOtherBank) {
    EXPECT_EQ(software(),
              "runs: V1 R0.1.0, installed, no bank, confirmed\nbank a: empty\nbank b: empty\n");
    const std::string first = signedImage(noise(2'000'000), "1.0.0");
    offer(first);
    ChildProcess watch(m_phone.ctlCommand({"watch", "software-bank-a-status", "--count", "1"}));
    std::string line;
    ASSERT_TRUE(watch.readErrorLine(line));
    const Outcome burnt = m_phone.ctl({"download", "swBind"});
    EXPECT_EQ(burnt.exitCode, 0) << burnt.err;
    EXPECT_NE(burnt.out.find("burning 98 %\n"), std::string::npos) << burnt.out;
    EXPECT_EQ(burnt.out.find("100 %"), std::string::npos) << burnt.out;
    EXPECT_TRUE(burnt.out.ends_with("swBind: " + m_phone.root() + "/data/vireo/image\n"));
    EXPECT_EQ(watch.finish().out, "software-bank-a-status = next\n");
    EXPECT_EQ(software(),
              "runs: V1 R0.1.0, installed, no bank, confirmed\nbank a: 1.0.0, next\nbank b: "
              "empty\n");
    restart();
    EXPECT_EQ(software(),
              "runs: 1.0.0, bank a, confirmed\nbank a: 1.0.0, running\nbank b: empty\n");
    runFrom(signedImage("payload", "2.0.0"));
    EXPECT_EQ(software(),
              "runs: 2.0.0, bank b, confirmed\nbank a: 1.0.0, spare\nbank b: 2.0.0, running\n");
    EXPECT_EQ(bank('a'), first);
    EXPECT_EQ(m_phone.ctl({"get", "software-version", "software-bank"}).out,
              "software-version = 2.0.0\nsoftware-bank = b\n");
    EXPECT_EQ(m_phone.ctl({"set", "software-version=3"}).err, "software-version: Not supported\n");
    EXPECT_EQ(m_phone.ctl({"--json", "software"}).out,
              R"({"result":true,"items":{"software-version":"2.0.0","software-bank":"b",)"
              R"("software-status":"confirmed","software-bank-a-version":"1.0.0",)"
              R"("software-bank-a-status":"spare","software-bank-b-version":"2.0.0",)"
              R"("software-bank-b-status":"running"},"refusals":[]})"
              "\n");
}

TEST_F(SoftwareImageTest, ATrialThatIsNotConfirmedGoesBack) {
    runFrom(signedImage("old", "1.0.0"));
    burnAndStop(signedImage("new", "2.0.0"));
    startInVain(m_phone.socket(), {"--plugin", "/none.so"});
    m_phone.start();
    EXPECT_EQ(software(),
              "runs: 1.0.0, bank a, fallback\nbank a: 1.0.0, running\nbank b: 2.0.0, failed\n");
    EXPECT_EQ(logged("bank b (2.0.0) was started on trial and not confirmed"), 1);
    // It can be tried again.
    runFrom(signedImage("new", "2.0.0"));
    EXPECT_EQ(software(),
              "runs: 2.0.0, bank b, confirmed\nbank a: 1.0.0, spare\nbank b: 2.0.0, running\n");
    // A bank that is damaged later gives way as well.
    m_phone.stop();
    std::string bytes = bank('b');
    bytes.back() = static_cast<char>(bytes.back() ^ 1);
    writeFile(m_phone.root() + "/flash/bank-b.img", bytes);
    m_phone.start();
    EXPECT_EQ(software(),
              "runs: 1.0.0, bank a, fallback\nbank a: 1.0.0, running\nbank b: damaged\n");
}

TEST_F(SoftwareImageTest, ASocketOfSomebodyElseIsNoFailureOfNewSoftwareAnyOtherIs) {
    runFrom(signedImage("old", "1.0.0"));
    burnAndStop(signedImage("new", "2.0.0"));
    const RunningPhone other;
    startInVain(other.socket());
    m_phone.start();
    EXPECT_TRUE(software().starts_with("runs: 2.0.0, bank b, confirmed\n")) << software();

    burnAndStop(signedImage("newer", "3.0.0"));
    startInVain(m_directory.path().string());
    m_phone.start();
    EXPECT_TRUE(software().starts_with("runs: 2.0.0, bank b, fallback\n")) << software();
}

TEST_F(SoftwareImageTest, AHostileImageIsOneLineAndOneStatusAndChangesNothing) {
    const std::string running = signedImage("running", kVersionUnderAttack);
    runFrom(running);
    const std::string marker = readFile(m_phone.root() + "/flash/boot");
    for (const Hostile& each : hostileImages()) {
        SCOPED_TRACE(each.what);
        const long before = logged(": " + each.reason + '\n');
        m_phone.set({"dl-app-last-status="});
        offer(each.content);
        const Outcome refused = m_phone.ctl({"download", "swBind"});
        EXPECT_EQ(refused.exitCode, 1);
        EXPECT_EQ(refused.out.find("burning"), std::string::npos) << "no burn was begun";
        EXPECT_EQ(m_phone.ctl({"get", "dl-app-last-status"}).out, "dl-app-last-status = 2\n");
        EXPECT_EQ(m_phone.ctl({"busy"}).out, "busy = 0 (idle)\n");
        EXPECT_EQ(logged(": " + each.reason + '\n'), before + 1);
        EXPECT_EQ(bank('a'), running);
        EXPECT_EQ(bank('b'), "");
        EXPECT_EQ(readFile(m_phone.root() + "/flash/boot"), marker);
    }
    runFrom(signedImage("good", "1.5.1"));
    EXPECT_TRUE(software().starts_with("runs: 1.5.1, bank b, confirmed\n")) << software();
}

TEST_F(SoftwareImageTest, ADowngradeIsAMatterOfSettings) {
    runFrom(signedImage("new", "2.0.0"));
    offer(signedImage("old", "1.0.0"));
    EXPECT_EQ(m_phone.ctl({"download", "swBind"}).exitCode, 1);
    m_phone.stop();
    m_phone.start({"--allow-downgrade", "yes"});
    EXPECT_EQ(m_phone.ctl({"download", "swBind"}).exitCode, 0);
    restart();
    EXPECT_EQ(software(),
              "runs: 1.0.0, bank b, confirmed\nbank a: 2.0.0, spare\nbank b: 1.0.0, running\n");
}

TEST_F(SoftwareImageTest, APhoneThatIsKilledDuringABurnStartsAgain) {
    runFrom(signedImage("old", "1.0.0"));
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    offer(signedImage(noise(8'000'000), "2.0.0"));
    long news = 0;
    const long rounds = effort("VIREO_BURN_ROUNDS", 12);
    for (long round = 0; round < rounds && !HasFailure(); ++round) {
        EXPECT_EQ(m_phone.ctl({"download", "swBind", "--no-wait"}).exitCode, 0);
        std::this_thread::sleep_for(std::chrono::milliseconds(random() % 150));
        m_phone.crash();
        m_phone.start();
        const std::string shown = software();
        const bool isNew = shown.starts_with("runs: 2.0.0, bank ");
        news += isNew ? 1 : 0;
        EXPECT_TRUE(isNew || shown.starts_with("runs: 1.0.0, bank ")) << shown;
    }
    std::printf("%ld rounds, %ld of them ended with the new software\n", rounds, news);
}

}  // namespace
}  // namespace vireo::test
