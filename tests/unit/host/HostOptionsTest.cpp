#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "options/HostOptions.h"
#include "support/TemporaryDirectory.h"

namespace vireo::test {
namespace {

/// Parses `arguments` and keeps what was said on standard error.
struct Parsed {
    explicit Parsed(std::vector<std::string> arguments) {
        std::vector<const char*> words{"vireod"};
        for (const std::string& argument : arguments) {
            words.push_back(argument.c_str());
        }
        ::testing::internal::CaptureStdout();
        ::testing::internal::CaptureStderr();
        options = HostOptions::parse(static_cast<int>(words.size()), words.data(), exitCode);
        out = ::testing::internal::GetCapturedStdout();
        err = ::testing::internal::GetCapturedStderr();
    }

    int exitCode = -1;
    std::optional<HostOptions> options;
    std::string out;
    std::string err;
};

/// The option or setting whose name begins at `position`.
std::string keyAt(const std::string& line, std::size_t position) {
    const std::size_t end = line.find_first_not_of("abcdefghijklmnopqrstuvwxyz-", position);
    return line.substr(position, end - position);
}

class HostOptionsTest : public ::testing::Test {
protected:
    std::string write(const std::string& text) {
        const std::string path = m_directory.file("vireod.conf");
        std::ofstream(path) << text;
        return path;
    }
    TemporaryDirectory m_directory;
};

/// What `--help` says on the line of each option, behind its name.
std::map<std::string, std::string> optionsInHelp() {
    std::map<std::string, std::string> options;
    std::istringstream help(Parsed({"--help"}).out);
    for (std::string line; std::getline(help, line);) {
        const std::size_t dashes = line.find("--");
        if (dashes != line.npos &&
            (line.find_first_not_of(' ') == dashes || line[dashes - 1] == ',')) {
            const std::string key = keyAt(line, dashes + 2);
            options[key] = line.substr(dashes + 2 + key.size()) + ' ';
        }
    }
    return options;
}

TEST_F(HostOptionsTest, TheShippedFileShowsEveryKeyWithItsDefault) {
    auto options = optionsInHelp();
    for (const char* elsewhere :
         {"help", "version", "config", "settings", "check-config", "set-password", "password-stdin",
          "plugin", "service", "trap-receiver"}) {
        EXPECT_EQ(options.erase(elsewhere), 1U) << "is for one start, or has no fixed default";
    }
    std::ifstream shipped(VIREO_CONFIG "/vireod.conf");
    std::string active;
    for (std::string line; std::getline(shipped, line);) {
        const std::string key = line.starts_with('#') ? keyAt(line, 1) : "";
        if (key.empty() || line.substr(1 + key.size(), 3) != " = ") {
            continue;
        }
        ASSERT_TRUE(options.contains(key)) << line;
        std::string value = line.substr(4 + key.size());
        std::erase(value, '"');
        const std::string option = options.extract(key).mapped();
        EXPECT_EQ(option.find('=' + value + ' ') == option.npos, value.empty()) << line << option;
        active += line.substr(1) + '\n';
    }
    EXPECT_TRUE(options.empty()) << "not shown: " << options.begin()->first;
    const Parsed fromFile({"--settings", write(active)});
    EXPECT_TRUE(fromFile.options) << fromFile.err;
}

TEST_F(HostOptionsTest, TheFileOfTheConfigurationDirectoryCountsAndTheCommandLineWins) {
    write(
        "# a comment\n\n  max-peers = 7  # of them\r\nsocket = \"/a b#c\"\nlog-level=4\n"
        "stall-timeout-ms = 250\nftp-mode = active");
    const std::string directory = m_directory.path();
    const Parsed both({"--config", directory, "--max-peers", "9", "--connect-timeout-ms", "70"});
    ASSERT_TRUE(both.options) << both.err;
    EXPECT_EQ(both.options->messages.maximumPeers, 9U);
    EXPECT_EQ(both.options->socket, "/a b#c");
    EXPECT_EQ(both.options->logLevel, 4);
    EXPECT_EQ(both.options->configDirectory, directory);
    const TransferOptions& transfer = both.options->devices.transfer;
    EXPECT_EQ(transfer.connectTimeout.count(), 70);
    EXPECT_EQ(transfer.stallTimeout.count(), 250);
    EXPECT_TRUE(transfer.usesActiveFtp);
}

TEST_F(HostOptionsTest, APasswordHasANameAndIsItselfOnNoCommandLine) {
    const Parsed parsed({"--set-password", "factory-reset", "--password-stdin"});
    ASSERT_TRUE(parsed.options) << parsed.err;
    EXPECT_EQ(parsed.options->passwordToSet, "factory-reset");
    EXPECT_TRUE(parsed.options->readsPassword);
    const std::vector<std::vector<std::string>> wrong{{"--set-password"},
                                                      {"--set-password", "other"},
                                                      {"--set-password", "factory-reset", "secret"},
                                                      {"--password-stdin"}};
    for (const std::vector<std::string>& arguments : wrong) {
        EXPECT_EQ(Parsed(arguments).exitCode, 2) << arguments.back();
    }
}

TEST_F(HostOptionsTest, FurtherServicesAddUpAndThoseOfTheCommandLineSetAsideTheFile) {
    const auto servicesOf = [](const Parsed& parsed) {
        std::string all = parsed.err;
        for (const NamedPlugin& each :
             parsed.options ? parsed.options->services : std::vector<NamedPlugin>()) {
            all += each.channel + " -> " + each.file + '\n';
        }
        return all;
    };
    const std::string path = write("service = a=/x.so\nservice = \"b.2=y#=z.so\"");
    EXPECT_EQ(servicesOf(Parsed({"--settings", path})), "a -> /x.so\nb.2 -> y#=z.so\n");
    EXPECT_EQ(servicesOf(Parsed({"--settings", path, "--service", "c=1", "--service", "d=2"})),
              "c -> 1\nd -> 2\n");
    EXPECT_EQ(servicesOf(Parsed({"--config", m_directory.file("none")})), "");
}

TEST_F(HostOptionsTest, AWrongSettingIsOneLineWithFileAndKeyAndExitCode2) {
    const struct {
        const char* text;
        const char* error;
    } cases[] = {
        {"max-peer = 3", "line 1: unknown key \"max-peer\""},
        {"\nmax-peers = abc", "line 2: max-peers: Value abc not in range"},
        {"max-peers = 0", "max-peers: Value 0 not in range 1 to 65536"},
        // Also where a size has 32 bits and would take the number for another.
        {"log-max-bytes = 1099511693313", "log-max-bytes: Value 1099511693313 not in range 65536"},
        {"max-peers = -1", "max-peers: Value -1 not in range"},
        {"max-peers = 1 2", "max-peers: Value 1 2 not in range"},
        {"store-busy-ms = 99999999999999999999", "store-busy-ms: Value 9"},
        {"max-message-bytes = 4194305", "max-message-bytes: Value 4194305 not in range"},
        {"max-peers", "\"max-peers\" is no setting"},
        {"[limits]", "\"[limits]\" is no setting"},
        {"max-peers =", "max-peers: no value"},
        {"root = \"/x", "root: no value, or a quote too many or too few"},
        {"root = \"/x\" y", "root: no value, or a quote"},
        {"config = /x", "config: can only be given on the command line"},
        {"store-file = ../x", "store-file: \"../x\" is no relative path"},
        {"store-file = /x", "store-file: \"/x\" is no relative path"},
        {"store-catalogue = a/b", "store-catalogue: \"a/b\" is no plain file name"},
        {"service = a=x\nservice = a/b=x", "line 2: service: \"a/b=x\" is no channel name"},
        {"service = name", "service: \"name\" is no channel name, '=' and file"},
        {"service = name=", "service: \"name=\" is no channel name, '=' and file"},
        {"connect-timeout-ms = 9", "connect-timeout-ms: Value 9 not in range 10 to 600000"},
        {"ftp-mode = both", "ftp-mode: both not in {passive,active}"},
        {"allow-downgrade = maybe", "allow-downgrade: maybe not in {yes,no}"},
        {"software-key-directory = ../x", "software-key-directory: \"../x\" is no relative path"},
        {"allow-device-commands = 1", "allow-device-commands: 1 not in {yes,no}"},
        {"log-mask-secrets = no way", "log-mask-secrets: no way not in {yes,no}"},
        {"set-password = factory-reset", "set-password: can only be given on the command line"},
        {"log-level = 3\nlog-level = 3", "line 2: log-level: the key is there twice"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.text);
        const std::string path = write(test.text);
        // A value is checked even if the command line overrides it.
        const Parsed parsed({"--settings", path, "--max-peers", "5", "--root", "/r"});
        EXPECT_FALSE(parsed.options);
        EXPECT_EQ(parsed.exitCode, 2);
        EXPECT_NE(parsed.err.find(path + ", "), std::string::npos) << parsed.err;
        EXPECT_NE(parsed.err.find(test.error), std::string::npos) << parsed.err;
        EXPECT_EQ(parsed.err.find('\n'), parsed.err.size() - 1) << parsed.err;
    }
    for (const std::string& path : {m_directory.file("none"), m_directory.path().string()}) {
        const Parsed parsed({"--settings", path});
        EXPECT_EQ(parsed.exitCode, 2);
        EXPECT_NE(parsed.err.find("cannot read the settings file " + path), std::string::npos);
    }
    const Parsed wrongOption({"--config", m_directory.file("none"), "--log-level", "9"});
    EXPECT_EQ(wrongOption.exitCode, 2);
    EXPECT_EQ(wrongOption.err.find('\n'), wrongOption.err.size() - 1) << wrongOption.err;
}

}  // namespace
}  // namespace vireo::test
