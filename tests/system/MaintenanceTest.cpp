#include <algorithm>
#include <filesystem>
#include <map>

#include "support/Enclosure.h"
#include "support/ProcessState.h"
#include "support/RunningPhone.h"

namespace vireo::test {
namespace {

namespace fs = std::filesystem;

constexpr int kReboot = 10;
constexpr const char* kRight = "right & \"proper\" <1>";

using Tree = std::map<std::string, std::string>;

/// Everything below a directory: names with contents and targets. Without the count of wrong
/// passwords and what the store writes beside itself.
Tree treeOf(const fs::path& directory) {
    Tree tree;
    for (const auto& entry : fs::recursive_directory_iterator(directory)) {
        const std::string name = entry.path().lexically_relative(directory);
        if (name.ends_with(".failures") || name.starts_with("data/das")) {
            continue;
        }
        tree[name] = entry.is_symlink()     ? "-> " + fs::read_symlink(entry.path()).string()
                     : entry.is_directory() ? "directory"
                                            : readFile(entry.path());
    }
    return tree;
}

/// A phone with files of every type, network overrides and a password for its factory reset.
class MaintenanceTest : public ::testing::Test {
protected:
    MaintenanceTest() { writeFile(m_outside / "canary", "outside"); }

    fs::path root() const { return m_phone.root(); }
    fs::path files(const std::string& name) const { return root() / "data/vireo" / name; }
    fs::path deployed(const std::string& name) const { return root() / "Vireo_Deploy" / name; }

    Outcome setPassword(const std::string& password) const {
        return ChildProcess::run({"/bin/sh", "-c",
                                  "printf '%s\\n' \"$1\" | \"$0\" --config \"$2\" --root \"$3\" "
                                  "--set-password factory-reset --password-stdin",
                                  VIREOD, password, VIREO_CONFIG, m_phone.root()});
    }
    Outcome factoryReset(const std::string& password) const {
        return ChildProcess::run({"/bin/sh", "-c",
                                  "printf '%s\\n' \"$1\" | \"$0\" --socket \"$2\" factory-reset "
                                  "--password-stdin",
                                  VIREOCTL, password, m_phone.socket()});
    }
    void fill() const {
        for (const char* type : {"midlets", "logos", "ldap", "jar", "jad", "phd",
                                 "voice_recog_playbacks", "voice_recog_patterns"}) {
            writeFile(files(type) / "downloaded", type);
        }
        writeFile(files("jar/GenericMidlet.jar"), "kept");
        writeFile(files("jad/GenericMidlet.jad"), "kept");
        writeFile(files("jad/MyGenericMidlet.jad"), "not kept");
        writeFile(files("help/index"), "not of a type that is reset");
        writeFile(files("music/own.wav"), "own");
        writeFile(deployed("music/default.wav"), "default");
        writeFile(deployed("images/default.png"), "default");
        writeFile(files("images/own.png"), "own");
        writeFile(deployed("networking/altHostname.sh"), "override");
        writeFile(root() / "data/networking/hosts", "override");
        writeFile(root() / "data/networking/deep/er", "override");
        fs::create_directory_symlink(m_outside, root() / "data/networking/out");
        fs::create_symlink(m_outside / "canary", root() / "data/networking/deep/out");
    }
    std::string listed(const std::string& type) const {
        return m_phone
            .ctl({"--json", "--protocol", "xml", "call", "getListOfFilesOfType",
                  "FileType:string=" + type})
            .out;
    }
    /// Where the text is in the log, into which lines come with a delay; an error when it is not.
    std::size_t inLog(const std::string& text) const {
        std::size_t at = std::string::npos;
        EXPECT_TRUE(eventually([&] {
            return (at = m_phone.log().find(text)) != std::string::npos;
        })) << text;
        return at;
    }

    TemporaryDirectory m_directory;
    const fs::path m_outside = m_directory.path() / "outside";
    RunningPhone m_phone;
};

TEST_F(MaintenanceTest, AWrongPasswordAndAPhoneWithoutOneChangeNothing) {
    fill();
    Tree before = treeOf(root());
    const Outcome none = factoryReset("");
    EXPECT_EQ(none.exitCode, 1);
    EXPECT_EQ(factoryReset(kRight).exitCode, 1);
    EXPECT_EQ(treeOf(root()), before);
    inLog("no password is set for the factory reset");

    EXPECT_EQ(setPassword(kRight).out, "vireod: the password for factory-reset is set\n");
    before = treeOf(root());
    const Outcome wrong = factoryReset("wrong");
    EXPECT_EQ(wrong.exitCode, 1);
    EXPECT_EQ(wrong.out, "");
    EXPECT_NE(wrong.err.find("no reboot was started: either the password was refused"),
              std::string::npos)
        << wrong.err;
    EXPECT_EQ(wrong.err.find("failed"), std::string::npos);
    EXPECT_EQ(treeOf(root()), before);
    inLog("Invalid factory reset password! input=***");
    EXPECT_EQ(m_phone.log().find("input=wrong"), std::string::npos);
}

TEST_F(MaintenanceTest, AResetLeavesDefaultsAloneAndRebootsOnlyWhenTheStoreWantsIt) {
    fill();
    ASSERT_EQ(setPassword(kRight).exitCode, 0);
    const Outcome reset = factoryReset(kRight);
    EXPECT_EQ(reset.exitCode, 1) << "no reboot was started";
    EXPECT_EQ(reset.err.find("failed"), std::string::npos) << reset.err;

    const Tree tree = treeOf(files(""));
    for (const char* gone : {"midlets/downloaded", "logos/downloaded", "ldap/downloaded",
                             "jar/downloaded", "jad/downloaded", "phd/downloaded",
                             "voice_recog_playbacks/downloaded", "voice_recog_patterns/downloaded",
                             "jad/MyGenericMidlet.jad", "music/own.wav", "images/own.png"}) {
        EXPECT_FALSE(tree.contains(gone)) << gone;
    }
    EXPECT_EQ(tree.at("jar/GenericMidlet.jar"), "kept");
    EXPECT_EQ(tree.at("jad/GenericMidlet.jad"), "kept");
    EXPECT_TRUE(tree.contains("help/index"));
    EXPECT_EQ(tree.at("images/default.png"), "-> " + deployed("images/default.png").string());
    EXPECT_EQ(tree.at("music/default.wav"), "-> " + deployed("music/default.wav").string());
    EXPECT_NE(listed("moh").find("default.wav"), std::string::npos) << listed("moh");
    EXPECT_EQ(readFile(deployed("music/default.wav")), "default");
    EXPECT_FALSE(fs::exists(deployed("networking/altHostname.sh")));
    EXPECT_TRUE(fs::is_empty(root() / "data/networking"));
    EXPECT_EQ(treeOf(m_outside), (Tree{{"canary", "outside"}}));
    inLog("shell: /bin/rm -rf /data/networking/* (below ");

    m_phone.set({"sip-server=192.0.2.7"});
    const Outcome again = factoryReset(kRight);
    EXPECT_EQ(again.exitCode, 0) << again.err;
    EXPECT_EQ(again.out, "the phone is reset and reboots\n") << "the answer came before the end";
    EXPECT_EQ(m_phone.process->finish().exitCode, kReboot);
    EXPECT_TRUE(fs::exists(root() / "reboot-requested"));
    inLog("FactoryReset: requires reboot.");

    m_phone.start();
    EXPECT_FALSE(fs::exists(root() / "reboot-requested"));
    EXPECT_EQ(m_phone.ctl({"get", "sip-server"}).out, "sip-server = 192.0.2.7\n");
    EXPECT_EQ(factoryReset(kRight).exitCode, 1) << "what was changed before the start is in force";
}

TEST_F(MaintenanceTest, ItsEffectsHaveAnOrder) {
    m_phone.stop();
    m_phone.start({"--log-level", "7"});
    fill();
    ASSERT_EQ(setPassword(kRight).exitCode, 0);
    m_phone.set({"sip-server=192.0.2.7"});
    EXPECT_EQ(factoryReset(kRight).exitCode, 0);
    EXPECT_EQ(m_phone.process->finish().exitCode, kReboot);
    const std::string deleting = "VireoClientMgmt::performFactoryReset deleting - ";
    std::vector<std::size_t> places{
        inLog("VireoClientMgmt::performFactoryReset: pwd = ***"),
        inLog("VireoClientMgmt::verifyFactoryResetPassword pwd = ***"),
        inLog("VireoClientMgmt::verifyFactoryResetPassword pwdMgmtIfc not NULL"),
        inLog("VireoClientMgmt::performFactoryReset: password verified")};
    for (const char* file :
         {"midlets/downloaded", "logos/downloaded", "ldap/downloaded", "jar/downloaded",
          "jad/MyGenericMidlet.jad", "phd/downloaded", "voice_recog_playbacks/downloaded",
          "voice_recog_patterns/downloaded", "music/own.wav"}) {
        places.push_back(inLog(deleting + files(file).string()));
    }
    for (const char* line : {"Deleted altHostname.sh", "shell: /bin/rm -rf /data/networking/*",
                             "the device is going down", "error [Vireo Client Management] event:",
                             "reboot: this process ends"}) {
        places.push_back(inLog(line));
    }
    EXPECT_TRUE(std::is_sorted(places.begin(), places.end()));
    EXPECT_EQ(m_phone.log().find("GenericMidlet.jar\\n"), std::string::npos);
}

TEST_F(MaintenanceTest, NoPasswordIsInTheLogFileThatOnlyItsOwnerMayRead) {
    const std::vector<std::string> secrets{"Hidden-1 <&> \"x\"", "Hidden-2", "Hidden-3; 4,5"};
    for (const bool masks : {true, false}) {
        m_phone.stop();
        fs::remove(m_phone.logFile());
        m_phone.start({"--log-level", "7", "--log-mask-secrets", masks ? "yes" : "no"});
        factoryReset(secrets[0]);
        for (const char* protocol : {"rpc", "xml"}) {
            m_phone.ctl({"--protocol", protocol, "set", "dl-ftp-password=" + secrets[1],
                         "snmp-trap-pwd=" + secrets[2], "language=de"});
            m_phone.ctl({"--protocol", protocol, "get", "dl-ftp-password", "snmp-trap-pwd"});
            m_phone.ctl({"--protocol", protocol, "call", "performFactoryReset",
                         "password:string=" + secrets[0]});
        }
        m_phone.stop();
        const std::string lines = m_phone.log();
        m_phone.start();
        EXPECT_EQ(lines.find("Hidden") == std::string::npos, masks) << lines;
        EXPECT_NE(lines.find(">de<"), std::string::npos) << "the rest is there";
        EXPECT_EQ(modeOf(m_phone.logFile()), 0600U);
    }
}

TEST_F(MaintenanceTest, ARebootIsAnsweredAndRecordedAndComesOnce) {
    auto client = m_phone.connect();
    bool isStarted = false;
    EXPECT_EQ(client->performReboot("new software\nat night", isStarted), CallStatus::eDone);
    EXPECT_TRUE(isStarted);
    EXPECT_EQ(m_phone.process->finish().exitCode, kReboot);
    inLog("new software\\nat night");
    m_phone.start();
    EXPECT_EQ(m_phone.ctl({"reboot", "again"}).out, "the phone reboots\n");
    EXPECT_EQ(m_phone.process->finish().exitCode, kReboot);
    const std::string code = std::to_string(kReboot) + '\n';
    const fs::path sources = fs::path(VIREO_CONFIG).parent_path();
    EXPECT_NE(readFile(sources / "cmake/systemd/vireod.service.in")
                  .find("\nRestartForceExitStatus=" + code),
              std::string::npos);
    EXPECT_NE(readFile(sources / "scripts/run").find("\nreboot=" + code), std::string::npos);
}

TEST_F(MaintenanceTest, UserDataAreResetByTheirOwnersAndTheService) {
    ChildProcess agent(m_phone.ctlCommand({"agent", "NetworkMgmtId"}));
    std::string line;
    ASSERT_TRUE(agent.readLine(line));
    m_phone.set({"phone-lock-timeout=30"});
    const Outcome reset = m_phone.ctl({"reset-user-data"});
    EXPECT_EQ(reset.exitCode, 0) << reset.err;
    EXPECT_EQ(reset.out, "the user's data are reset\n");
    EXPECT_EQ(m_phone.ctl({"get", "phone-lock-timeout"}).out, "phone-lock-timeout = 5\n");
    ASSERT_TRUE(agent.readLine(line));
    EXPECT_NE(line.find("reset"), std::string::npos) << line;
}

/// The wrapper of a process whose machine has a directory /data of the test's.
std::vector<std::string> withData(const std::string& directory) {
    std::vector<std::string> wrapper{"bwrap"};
    for (const auto& entry : fs::directory_iterator("/")) {
        const std::string path = entry.path();
        if (entry.is_symlink()) {
            wrapper.insert(wrapper.end(), {"--symlink", fs::read_symlink(path), path});
        } else if (entry.is_directory() && path != "/data") {
            wrapper.insert(wrapper.end(), {"--dev-bind", path, path});
        }
    }
    wrapper.insert(wrapper.end(), {"--bind", directory, "/data", "--"});
    return wrapper;
}

TEST_F(MaintenanceTest, TheMachinesOwnDataAreNotTouched) {
    if (!Enclosure::isPossible()) {
        GTEST_SKIP() << "no mount namespaces here";
    }
    const fs::path data = m_directory.path() / "data";
    writeFile(data / "networking/canary", "of the machine");
    m_phone.stop();
    m_phone.wrap(withData(data));
    m_phone.start({"--allow-device-commands", "yes"});
    fill();
    ASSERT_EQ(setPassword(kRight).exitCode, 0);
    m_phone.set({"sip-server=192.0.2.7"});
    EXPECT_EQ(factoryReset(kRight).exitCode, 0);
    EXPECT_EQ(m_phone.process->finish().exitCode, kReboot);
    EXPECT_TRUE(fs::is_empty(root() / "data/networking"));
    EXPECT_EQ(readFile(data / "networking/canary"), "of the machine");
    inLog("allow-device-commands has no effect");
}

}  // namespace
}  // namespace vireo::test
