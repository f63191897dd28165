#include <fcntl.h>
#include <gtest/gtest.h>
#include <termios.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "DownloadLine.h"
#include "terminal/PasswordInput.h"
#include "terminal/StopSignal.h"

namespace vireo {
namespace {

std::string text(const Download::Options& options) {
    std::string text =
        options.type + (options.wait ? "" : " no-wait") + (options.overrideBusy ? " override" : "");
    if (options.source) {
        const LocalMgmtClient::DownloadSource& from = *options.source;
        text += " " + std::to_string(from.protocol) + "|" + from.server + "|" + from.port + "|" +
                from.userName + "|" + from.password + "|" + from.sourcePath + "|" + from.fileName;
    }
    return text;
}

TEST(DownloadLine, SaysWhatWasTypedAndRefusesWhatDoesNotFitTogether) {
    const struct {
        std::string arguments;
        std::string options;  // empty: refused
    } rows[] = {
        {"ringer", "ringer"},
        {"swBind --no-wait", "swBind no-wait"},
        {"logo --from ftp --server h a.png", "logo 1|h|||||a.png"},
        {"logo a.png --from https --server https://h/b --port 8443 --user u --path d "
         "--override-busy",
         "logo override 2|https://h/b|8443|u||d|a.png"},
        {"", ""},
        {"Ringer", ""},
        {"ringer a.wav", ""},
        {"ringer --server h", ""},
        {"ringer --port 21", ""},
        {"ringer --override-busy", ""},
        {"ringer --from ftp a.wav", ""},
        {"ringer --from ftp --server h", ""},
        {"ringer --from scp --server h a.wav", ""},
        {"ringer --from ftp --server h a.wav --port 65536", ""},
        {"ringer --from ftp --server h a.wav --password-stdin", ""},
        {"ringer --from ftp --server h a.wav --user u --password p", ""},
    };
    for (const auto& row : rows) {
        CLI::App app;
        DownloadLine line;
        bool isChosen = false;
        line.declare(app, [&isChosen] { isChosen = true; });
        std::string outcome;
        try {
            app.parse("download " + row.arguments);
            outcome = text(line.options());
        } catch (const CLI::ParseError&) {
            isChosen = true;  // refused instead
        }
        EXPECT_EQ(outcome, row.options) << row.arguments;
        EXPECT_TRUE(isChosen) << row.arguments;
    }
}

TEST(PasswordInput, TakesOneLineOfAPipeAndLeavesTheRest) {
    const struct {
        std::string input;
        std::optional<std::string> password;
        std::string rest;
    } rows[] = {
        {"p/w:#\nrest", "p/w:#", "rest"},
        {"no end", "no end", ""},
        {"\nx", "", "x"},
        {"", std::nullopt, ""},
    };
    const StopSignal stop;
    for (const auto& row : rows) {
        int ends[2];
        ASSERT_EQ(::pipe(ends), 0);
        ASSERT_EQ(::write(ends[1], row.input.data(), row.input.size()),
                  static_cast<ssize_t>(row.input.size()));
        ::close(ends[1]);
        std::string error;
        EXPECT_EQ(PasswordInput::readLine(ends[0], stop, error), row.password) << row.input;
        EXPECT_EQ(error.empty(), row.password.has_value()) << row.input;
        char rest[16];
        const ssize_t left = ::read(ends[0], rest, sizeof rest);
        EXPECT_EQ(std::string(rest, left > 0 ? static_cast<std::size_t>(left) : 0), row.rest);
        ::close(ends[0]);
    }
}

TEST(PasswordInput, ShowsNothingOfWhatIsTypedAndLeavesTheTerminalAsItWas) {
    const int person = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (person < 0) {
        GTEST_SKIP() << "there are no pseudo terminals here";
    }
    ASSERT_EQ(::grantpt(person), 0);
    ASSERT_EQ(::unlockpt(person), 0);
    const std::string terminal = ::ptsname(person);
    const int kept = ::open(terminal.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_GE(kept, 0);
    termios before{};
    ASSERT_EQ(::tcgetattr(kept, &before), 0);
    std::string seen;
    std::thread typing([&] {
        // What is typed before the question would be thrown away.
        char byte = 0;
        while (seen.find(": ") == std::string::npos && ::read(person, &byte, 1) == 1) {
            seen += byte;
        }
        EXPECT_EQ(::write(person, "secret\n", 7), 7);
    });
    const StopSignal stop;
    std::string error;
    EXPECT_EQ(PasswordInput::ask("Password: ", stop, error, terminal.c_str()), "secret") << error;
    typing.join();
    char rest[64];
    const ssize_t left = ::read(person, rest, sizeof rest);
    seen.append(rest, left > 0 ? static_cast<std::size_t>(left) : 0);
    EXPECT_EQ(seen, "Password: \r\n");
    termios after{};
    ASSERT_EQ(::tcgetattr(kept, &after), 0);
    EXPECT_EQ(after.c_lflag, before.c_lflag);
    EXPECT_EQ(after.c_cc[VSUSP], before.c_cc[VSUSP]);
    ::close(kept);
    ::close(person);

    EXPECT_FALSE(PasswordInput::ask("Password: ", stop, error, "/dev/null"));
    EXPECT_NE(error.find("--password-stdin"), std::string::npos) << error;
}

}  // namespace
}  // namespace vireo
