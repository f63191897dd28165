#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Assignment.h"
#include "BusyMask.h"
#include "Commands.h"
#include "ExitCode.h"
#include "FileTypes.h"
#include "FilesLine.h"
#include "JsonPrinter.h"
#include "LocalMgmtClient.h"
#include "ParameterArgument.h"
#include "ServingLine.h"
#include "TextPrinter.h"
#include "TrapLine.h"

namespace vireo {
namespace {

struct CommandLine;
using Command = std::function<ExitCode(Commands&)>;
// Makes the command that a line stands for; none, with `error`, when its arguments are wrong.
using Binder = std::optional<Command> (*)(const CommandLine& line, std::string& error);

struct CommandLine {
    std::string socketPath = "/run/vireo/vireo.sock";
    std::string channelName;  // empty: as the command has it
    std::string protocol = "rpc";
    bool json = false;
    int timeout = 5000;
    std::string name;             // of a method, schema, item or file type
    std::string action = "show";  // of "busy"
    std::string number;
    std::string fileName;
    std::vector<std::string> arguments;  // of the command
    bool readsPassword = false;
    Binder bind = nullptr;
    FilesLine files;      // instead of it
    TrapLine trap;        // likewise
    ServingLine serving;  // instead of it, for the commands that go on
};

std::optional<Command> bindGet(const CommandLine& line, std::string& /*error*/) {
    return [tags = line.arguments](Commands& commands) { return commands.get(tags); };
}

std::optional<Command> bindSet(const CommandLine& line, std::string& error) {
    const auto assignments = Assignment::parseAll(line.arguments, error);
    if (!assignments) {
        return std::nullopt;
    }
    return [all = *assignments](Commands& commands) { return commands.set(all); };
}

std::optional<Command> bindSoftware(const CommandLine& /*line*/, std::string& /*error*/) {
    return [](Commands& commands) { return commands.software(); };
}

std::optional<Command> bindSchema(const CommandLine& line, std::string& /*error*/) {
    return [name = line.name](Commands& commands) { return commands.schema(name); };
}

std::optional<Command> bindSchemaOf(const CommandLine& line, std::string& /*error*/) {
    return [tag = line.name](Commands& commands) { return commands.schemaOf(tag); };
}

std::optional<Command> bindInvalidateCache(const CommandLine& /*line*/, std::string& /*error*/) {
    return [](Commands& commands) { return commands.invalidateCache(); };
}

std::optional<Command> bindBusy(const CommandLine& line, std::string& error) {
    const bool shows = line.action == "show";
    if (shows != line.number.empty()) {
        error = shows ? "'show' takes no bits" : "'" + line.action + "' needs the bits";
        return std::nullopt;
    }
    if (shows) {
        return [](Commands& commands) { return commands.showBusy(); };
    }
    const std::optional<unsigned> bits = BusyMask::parse(line.number, error);
    if (!bits) {
        return std::nullopt;
    }
    return [bits = *bits, sets = line.action == "set"](Commands& commands) {
        return sets ? commands.setBusy(bits) : commands.clearBusy(bits);
    };
}

std::optional<Command> bindTrap(const CommandLine& line, std::string& error) {
    return line.trap.bind(error);
}

std::optional<Command> bindLimits(const CommandLine& line, std::string& /*error*/) {
    return [fileType = line.name](Commands& commands) { return commands.limits(fileType); };
}

std::optional<Command> bindDownloadStatus(const CommandLine& line, std::string& /*error*/) {
    return [type = line.name, file = line.fileName](Commands& commands) {
        return commands.downloadStatus(type, file);
    };
}

std::optional<Command> bindValidate(const CommandLine& line, std::string& /*error*/) {
    return [type = line.name, file = line.fileName](Commands& commands) {
        return commands.validate(type, file);
    };
}

std::optional<Command> bindFactoryReset(const CommandLine& line, std::string& /*error*/) {
    return [readsInput = line.readsPassword](Commands& commands) {
        return commands.factoryReset([readsInput](std::string& error) {
            return Commands::askForPassword(readsInput, error);
        });
    };
}

std::optional<Command> bindReboot(const CommandLine& line, std::string& /*error*/) {
    return [reason = line.name](Commands& commands) { return commands.reboot(reason); };
}

std::optional<Command> bindResetUserData(const CommandLine& /*line*/, std::string& /*error*/) {
    return [](Commands& commands) { return commands.resetUserData(); };
}

std::optional<Command> bindCall(const CommandLine& line, std::string& error) {
    std::vector<Parameter> parameters;
    for (const std::string& argument : line.arguments) {
        const auto parameter = ParameterArgument::parse(argument, error);
        if (!parameter) {
            return std::nullopt;
        }
        parameters.push_back(*parameter);
    }
    return [name = line.name, parameters](Commands& commands) {
        return commands.call(name, parameters);
    };
}

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

CLI::App& addCommand(CLI::App& app, CommandLine& line, const char* name, const char* description,
                     Binder bind) {
    CLI::App* command = app.add_subcommand(name, description);
    command->callback([&line, bind] { line.bind = bind; });
    return *command;
}

CLI::App& addFileCommand(CLI::App& app, CommandLine& line, const char* name,
                         const char* description, Binder bind) {
    CLI::App& command = addCommand(app, line, name, description, bind);
    command.add_option("TYPE", line.name, "The file type")
        ->required()
        ->check(CLI::IsMember(FileTypes::names()))
        ->type_name("");
    return command;
}

void declareFileCommands(CLI::App& app, CommandLine& line) {
    addFileCommand(app, line, "limits", "Print how many files of a type the phone keeps",
                   bindLimits);
    addFileCommand(app, line, "download-status",
                   "Print how far the current or last download of a type is", bindDownloadStatus)
        .add_option("NAME", line.fileName, "Only if it is of this file")
        ->type_name("");
    addFileCommand(app, line, "validate", "Check a file of the phone; it is deleted if too large",
                   bindValidate)
        .add_option("NAME", line.fileName, "The file, without its directory")
        ->required()
        ->type_name("");
}

void declareMaintenance(CLI::App& app, CommandLine& line) {
    addCommand(app, line, "factory-reset",
               "Delete downloads, users' files and network settings; asks for the password",
               bindFactoryReset)
        .add_flag("--password-stdin", line.readsPassword, "Read the password from standard input");
    addCommand(app, line, "reboot", "Reboot the phone", bindReboot)
        .add_option("REASON", line.name, "Why; it is recorded")
        ->required()
        ->type_name("");
    addCommand(app, line, "reset-user-data",
               "Have all owners reset the user's data, and reset the current user's files",
               bindResetUserData);
}

void declareCommands(CLI::App& app, CommandLine& line) {
    addCommand(app, line, "get", "Read items", bindGet)
        .add_option("TAG", line.arguments, "The items to read")
        ->required()
        ->type_name("");
    addCommand(app, line, "set", "Write items", bindSet)
        .add_option("ASSIGNMENT", line.arguments, "What to write; a value is taken as it is")
        ->required()
        ->type_name("TAG=VALUE");
    addCommand(app, line, "software", "Show the phone's software and both of its banks",
               bindSoftware);
    addCommand(app, line, "schema", "Print a schema", bindSchema)
        .add_option("NAME", line.name, "The schema")
        ->required()
        ->type_name("");
    addCommand(app, line, "schema-of", "Print the name of an item's schema", bindSchemaOf)
        .add_option("TAG", line.name, "The item")
        ->required()
        ->type_name("");
    addCommand(app, line, "invalidate-cache",
               "Make the service forget the last known values of other owners' items",
               bindInvalidateCache);
    CLI::App& busy =
        addCommand(app, line, "busy", "Show or change what keeps the phone busy", bindBusy);
    busy.add_option("ACTION", line.action, "What to do: show, set or clear")
        ->check(CLI::IsMember({"show", "set", "clear"}))
        ->type_name("")
        ->capture_default_str();
    busy.add_option("BITS", line.number, "The bits to set or clear, decimal or 0x and hexadecimal")
        ->type_name("");
    line.trap.declare(app, [&line] { line.bind = bindTrap; });
    declareFileCommands(app, line);
    declareMaintenance(app, line);
    CLI::App& call =
        addCommand(app, line, "call", "Call any method of the local interface", bindCall);
    call.add_option("METHOD", line.name, "The method")->required()->type_name("");
    call.add_option("PARAMETER", line.arguments, "Its parameters; TYPE is int, bool, string or xml")
        ->type_name("NAME:TYPE=VALUE");
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

ExitCode ask(const CommandLine& line, const Command& command, AnswerPrinter& printer) {
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
    std::optional<Command> command;
    std::optional<ServingLine::Command> serving;
    if (line.serving.isChosen()) {
        serving = line.serving.bind(error);
    } else if (line.files.command()) {
        command = line.files.command();
    } else {
        command = line.bind(line, error);
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
    declareCommands(app, line);
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
