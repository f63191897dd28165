#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <functional>
#include <iostream>
#include <string>
#include <vector>

#include "ImageCommands.h"
#include "Ports.h"
#include "image/ImageHeader.h"
#include "log/Log.h"

namespace vireo {
namespace {

constexpr int kDone = 0;
constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

/// What the library that reads keys has to say.
class WarningPrinter : public LogPort {
public:
    void write(std::string_view /*component*/, std::string_view /*file*/, int /*level*/,
               int /*line*/, std::string_view text) noexcept override {
        std::fprintf(stderr, "vireo-image: %.*s\n", static_cast<int>(text.size()), text.data());
    }
};

struct CommandLine {
    ImageCommands::Recipe recipe;
    ImageCommands::Standard standard;
    std::string name;
    std::string keyFile;
    std::string imageFile;
    std::function<void(ImageCommands&)> command;
};

std::string checkVariant(const std::string& text) {
    return ImageHeader::isVariant(text)
               ? std::string()
               : '"' + text + "\" has not 1 to 64 letters, digits, '.', '_' and '-'";
}

std::string checkVersion(const std::string& text) {
    return SoftwareVersion::parse(text)
               ? std::string()
               : '"' + text + "\" is no version: up to four numbers to 65535, as in 2.1.0";
}

template <class Target>
CLI::Option* declareVersion(CLI::App& app, const char* name, Target& target,
                            const char* description) {
    return app
        .add_option_function<std::string>(
            name,
            [&target](const std::string& text) { target = SoftwareVersion::parse(text).value(); },
            description)
        ->check(checkVersion)
        ->type_name("VERSION");
}

CLI::App& addCommand(CLI::App& app, CommandLine& line, const char* name, const char* description,
                     std::function<void(ImageCommands&)> command) {
    CLI::App* added = app.add_subcommand(name, description);
    added->callback([&line, command = std::move(command)] { line.command = command; });
    return *added;
}

void declareImage(CLI::App& command, std::string& file, const char* description) {
    command.add_option("IMAGE", file, description)->required()->type_name("");
}

void declareMaking(CLI::App& app, CommandLine& line) {
    addCommand(app, line, "keygen", "Make a key: NAME-private.pem and NAME.pem",
               [&line](ImageCommands& commands) { commands.keygen(line.name); })
        .add_option("NAME", line.name, "How the files begin; a directory may stand before it")
        ->required()
        ->type_name("");
    CLI::App& create =
        addCommand(app, line, "create", "Make an image",
                   [&line](ImageCommands& commands) { commands.create(line.recipe); });
    create.add_option("--variant", line.recipe.hardwareVariant, "The phones that it is for")
        ->required()
        ->check(checkVariant)
        ->type_name("TEXT");
    declareVersion(create, "--version", line.recipe.version, "Which software it is")->required();
    create
        .add_option("--key", line.recipe.keyFile, "Private key to sign it with; none: not signed")
        ->type_name("FILE");
    create.add_option("PAYLOAD", line.recipe.payloadFile, "What is in it")
        ->required()
        ->type_name("");
    declareImage(create, line.recipe.imageFile, "The file to make");
    CLI::App& sign = addCommand(
        app, line, "sign", "Sign an image, in the place of whoever signed it before",
        [&line](ImageCommands& commands) { commands.sign(line.keyFile, line.imageFile); });
    sign.add_option("--key", line.keyFile, "Private key")->required()->type_name("FILE");
    declareImage(sign, line.imageFile, "The image");
}

void declareLooking(CLI::App& app, CommandLine& line) {
    declareImage(addCommand(app, line, "inspect", "Print what an image says of itself, true or not",
                            [&line](ImageCommands& commands) { commands.inspect(line.imageFile); }),
                 line.imageFile, "The image");
    CLI::App& verify =
        addCommand(app, line, "verify", "Check an image as a phone would",
                   [&line](auto& commands) { commands.verify(line.standard, line.imageFile); });
    CLI::Option_group* const keys =
        verify.add_option_group("Keys", "Whose signature is believed; at least one of them");
    keys->add_option("--key", line.standard.keyFiles, "Public key; any number of times")
        ->type_name("FILE")
        ->allow_extra_args(false);
    keys->add_option("--keys", line.standard.keyDirectory, "Directory of public keys, *.pem")
        ->type_name("DIR")
        ->check(CLI::ExistingDirectory);
    keys->require_option(1, 0);
    verify
        .add_option("--variant", line.standard.hardwareVariant, "The phone that it has to be for")
        ->check(checkVariant)
        ->type_name("TEXT");
    declareVersion(verify, "--not-before", line.standard.oldestVersion,
                   "The oldest version that is taken");
    declareImage(verify, line.imageFile, "The image");
}

int run(int argc, char** argv) {
    CommandLine line;
    CLI::App app("Makes and checks software images for the phone.", "vireo-image");
    app.require_subcommand(1);
    app.set_version_flag("--version", "vireo-image " VIREO_VERSION);
    app.footer(
        "A key, an image, and a look at it:\n"
        "  vireo-image keygen release\n"
        "  vireo-image create --variant desk-1 --version 2.1.0 --key release-private.pem \\\n"
        "      payload phone.img\n"
        "  vireo-image verify --key release.pem phone.img\n"
        "Exit codes: 0 done, 1 failed or not good, 2 wrong usage.");
    declareMaking(app, line);
    declareLooking(app, line);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& stop) {
        if (stop.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
            return app.exit(stop);
        }
        const std::vector<std::string> unknown = app.remaining();
        std::cerr << "vireo-image: "
                  << (app.get_subcommands().empty() && !unknown.empty()
                          ? '\'' + unknown.front() + "' is no command or option"
                          : std::string(stop.what()))
                  << "\nRun 'vireo-image --help' for more.\n";
        return kWrongUsage;
    }
    WarningPrinter warnings;
    installPorts({.log = &warnings});
    setLogLevel(kLogWarning);
    ImageCommands commands(std::cout);
    line.command(commands);
    installPorts({});
    return std::cout.flush() ? kDone : kFailed;
}

}  // namespace
}  // namespace vireo

int main(int argc, char** argv) {
    try {
        return vireo::run(argc, argv);
    } catch (const std::exception& exception) {
        vireo::installPorts({});
        std::fprintf(stderr, "vireo-image: %s\n", exception.what());
        return vireo::kFailed;
    }
}
