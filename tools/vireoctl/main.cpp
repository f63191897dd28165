#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "AskingLine.h"
#include "Commands.h"
#include "ExitCode.h"
#include "FilesLine.h"
#include "JsonPrinter.h"
#include "LocalMgmtClient.h"
#include "ServingLine.h"
#include "TextPrinter.h"

namespace vireo {
namespace {

struct CommandLine {
    std::string socketPath = "/run/vireo/vireo.sock";
    std::string channelName;  // empty: as the command has it
    std::string protocol = "rpc";
    bool json = false;
    int timeout = 5000;
    // The line has a command of one of them.
    AskingLine asking;
    FilesLine files;
    ServingLine serving;
};

std::string checkChannelName(const std::string& name) {
    return name.empty() || name.size() > 64 ? "a channel name has 1 to 64 characters" : "";
}

void declareOptions(CLI::App& app, CommandLine& line) {
    app.set_version_flag("--version", "vireoctl " VIREO_VERSION);
    app.add_option("--socket", line.socketPath, "The service's socket")
        ->envname("VIREO_SOCKET")
        ->type_name("PATH")
        ->capture_default_str();
    app.add_option("--channel", line.channelName,
                   "The name to connect as; a last \"-*\" takes the lowest free number "
                   "[vireoctl-*; of watch, agent and download: watch-*, agent-*, download-*]")
        ->check(checkChannelName)
        ->type_name("NAME");
    app.add_option("--protocol", line.protocol, "How requests are encoded")
        ->check(CLI::IsMember({"rpc", "xml"}))
        ->capture_default_str();
    app.add_flag("--json", line.json, "Print one JSON object per answer");
    app.add_option("--timeout", line.timeout, "How long to wait for the service")
        ->check(CLI::Range(1, 86400000))
        ->type_name("MS")
        ->capture_default_str();
}

LocalMgmtClient::Options connectionOf(const CommandLine& line, const std::string& channelName) {
    LocalMgmtClient::Options options;
    options.socketPath = line.socketPath;
    options.channelName = line.channelName.empty() ? channelName : line.channelName;
    options.timeout = std::chrono::milliseconds(line.timeout);
    options.protocol =
        line.protocol == "xml" ? LocalMgmtClient::Protocol::eXml : LocalMgmtClient::Protocol::eRpc;
    return options;
}

ExitCode ask(const CommandLine& line, const AskingLine::Command& command, AnswerPrinter& printer) {
    const LocalMgmtClient::Options options = connectionOf(line, "vireoctl-*");
    std::string error;
    const std::unique_ptr<LocalMgmtClient> client = LocalMgmtClient::connect(options, error);
    if (!client) {
        const bool isReached = error.find(": refused: ") != std::string::npos;
        std::cerr << "vireoctl: " << error
                  << (isReached ? "\n" : "; --socket or VIREO_SOCKET names another path\n");
        return ExitCode::eNotReached;
    }
    Commands commands(*client, printer, std::cerr, options.timeout);
    return command(commands);
}

// One that can move its cursor.
bool isTerminal(int descriptor) {
    const char* const kind = std::getenv("TERM");
    return ::isatty(descriptor) == 1 && kind != nullptr && std::string_view(kind) != "dumb";
}

ExitCode runCommand(const CommandLine& line, const std::string& name) {
    std::string error;
    std::optional<AskingLine::Command> command;
    std::optional<ServingLine::Command> serving;
    if (line.serving.isChosen()) {
        serving = line.serving.bind(error);
    } else if (line.files.command()) {
        command = line.files.command();
    } else {
        command = line.asking.bind(error);
    }
    if (!command && !serving) {
        std::cerr << "vireoctl " << name << ": " << error << '\n';
        return ExitCode::eUsage;
    }
    TextPrinter text(std::cout, std::cerr, isTerminal(STDOUT_FILENO));
    JsonPrinter json(std::cout, std::cerr);
    AnswerPrinter& printer = line.json ? static_cast<AnswerPrinter&>(json) : text;
    ExitCode code = command ? ask(line, *command, printer)
                            : (*serving)(connectionOf(line, line.serving.channelName()), printer,
                                         std::cout, std::cerr);
    if (!std::cout.flush()) {
        std::cerr << "vireoctl: the answer cannot be written out\n";
        code = code == ExitCode::eDone ? ExitCode::eRefused : code;
    }
    return code;
}

// Help and version stop the parsing too, but are no mistakes.
ExitCode reportStop(const CLI::App& app, const CLI::ParseError& stop) {
    if (stop.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
        app.exit(stop);
        return ExitCode::eDone;
    }
    const std::vector<std::string> unknown = app.remaining();
    if (app.get_subcommands().empty() && !unknown.empty()) {
        std::cerr << "vireoctl: '" << unknown.front() << "' is no command or option\n";
    } else {
        std::cerr << "vireoctl: " << stop.what() << '\n';
    }
    std::cerr << "Run 'vireoctl --help' for more information.\n";
    return ExitCode::eUsage;
}

// The parser would take such an argument for a list and read what is inside.
const char* findBracketed(int argc, char** argv) {
    char** const end = argv + argc;
    char** const found = std::find_if(argv + 1, end, [](std::string_view argument) {
        return argument.size() > 1 && argument.front() == '[' && argument.back() == ']';
    });
    return found != end ? *found : nullptr;
}

ExitCode run(int argc, char** argv) {
    if (const char* const argument = argc > 1 ? findBracketed(argc, argv) : nullptr) {
        std::cerr << "vireoctl: '" << argument << "' is no name, number or assignment\n";
        return ExitCode::eUsage;
    }
    CommandLine line;
    CLI::App app("Reads and writes the phone's settings through the client management service.",
                 "vireoctl");
    app.require_subcommand(1);
    app.fallthrough();
    app.footer(
        "Exit codes: 0 done, 1 refused or failed, 2 wrong usage, 3 service not reached or no "
        "answer in time.");
    declareOptions(app, line);
    line.asking.declare(app);
    line.files.declare(app);
    line.serving.declare(app);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& stop) {
        return reportStop(app, stop);
    }
    return runCommand(line, app.get_subcommands().front()->get_name());
}

}  // namespace
}  // namespace vireo

int main(int argc, char** argv) {
    try {
        return static_cast<int>(vireo::run(argc, argv));
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "vireoctl: %s\n", exception.what());
        return static_cast<int>(vireo::ExitCode::eRefused);
    }
}
