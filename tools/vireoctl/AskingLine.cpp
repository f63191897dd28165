#include "AskingLine.h"

#include "Assignment.h"
#include "BusyMask.h"
#include "FileTypes.h"
#include "ParameterArgument.h"

namespace vireo {

void AskingLine::declare(CLI::App& app) {
    declareItems(app);
    declareSchemas(app);
    declareBusy(app);
    m_trap.declare(app, [this] { m_bind = &AskingLine::bindTrap; });
    declareFiles(app);
    declareMaintenance(app);
    declareCall(app);
}

CLI::App& AskingLine::addCommand(CLI::App& app, const char* name, const char* description,
                                 Binder binder) {
    CLI::App* command = app.add_subcommand(name, description);
    command->callback([this, binder] { m_bind = binder; });
    return *command;
}

CLI::App& AskingLine::addFileCommand(CLI::App& app, const char* name, const char* description,
                                     Binder binder) {
    CLI::App& command = addCommand(app, name, description, binder);
    command.add_option("TYPE", m_name, "The file type")
        ->required()
        ->check(CLI::IsMember(FileTypes::names()))
        ->type_name("");
    return command;
}

void AskingLine::declareItems(CLI::App& app) {
    addCommand(app, "get", "Read items", &AskingLine::bindGet)
        .add_option("TAG", m_arguments, "The items to read")
        ->required()
        ->type_name("");
    addCommand(app, "set", "Write items", &AskingLine::bindSet)
        .add_option("ASSIGNMENT", m_arguments, "What to write; a value is taken as it is")
        ->required()
        ->type_name("TAG=VALUE");
    addCommand(app, "software", "Show the phone's software and both of its banks",
               &AskingLine::bindSoftware);
}

void AskingLine::declareSchemas(CLI::App& app) {
    addCommand(app, "schema", "Print a schema", &AskingLine::bindSchema)
        .add_option("NAME", m_name, "The schema")
        ->required()
        ->type_name("");
    addCommand(app, "schema-of", "Print the name of an item's schema", &AskingLine::bindSchemaOf)
        .add_option("TAG", m_name, "The item")
        ->required()
        ->type_name("");
    addCommand(app, "invalidate-cache",
               "Make the service forget the last known values of other owners' items",
               &AskingLine::bindInvalidateCache);
}

void AskingLine::declareBusy(CLI::App& app) {
    CLI::App& busy =
        addCommand(app, "busy", "Show or change what keeps the phone busy", &AskingLine::bindBusy);
    busy.add_option("ACTION", m_action, "What to do: show, set or clear")
        ->check(CLI::IsMember({"show", "set", "clear"}))
        ->type_name("")
        ->capture_default_str();
    busy.add_option("BITS", m_number, "The bits to set or clear, decimal or 0x and hexadecimal")
        ->type_name("");
}

void AskingLine::declareFiles(CLI::App& app) {
    addFileCommand(app, "limits", "Print how many files of a type the phone keeps",
                   &AskingLine::bindLimits);
    addFileCommand(app, "download-status",
                   "Print how far the current or last download of a type is",
                   &AskingLine::bindDownloadStatus)
        .add_option("NAME", m_fileName, "Only if it is of this file")
        ->type_name("");
    addFileCommand(app, "validate", "Check a file of the phone; it is deleted if too large",
                   &AskingLine::bindValidate)
        .add_option("NAME", m_fileName, "The file, without its directory")
        ->required()
        ->type_name("");
}

void AskingLine::declareMaintenance(CLI::App& app) {
    addCommand(app, "factory-reset",
               "Delete downloads, users' files and network settings; asks for the password",
               &AskingLine::bindFactoryReset)
        .add_flag("--password-stdin", m_readsPassword, "Read the password from standard input");
    addCommand(app, "reboot", "Reboot the phone", &AskingLine::bindReboot)
        .add_option("REASON", m_name, "Why; it is recorded")
        ->required()
        ->type_name("");
    addCommand(app, "reset-user-data",
               "Have all owners reset the user's data, and reset the current user's files",
               &AskingLine::bindResetUserData);
}

void AskingLine::declareCall(CLI::App& app) {
    CLI::App& call =
        addCommand(app, "call", "Call any method of the local interface", &AskingLine::bindCall);
    call.add_option("METHOD", m_name, "The method")->required()->type_name("");
    call.add_option("PARAMETER", m_arguments, "Its parameters; TYPE is int, bool, string or xml")
        ->type_name("NAME:TYPE=VALUE");
}

std::optional<AskingLine::Command> AskingLine::bindGet(std::string& /*error*/) const {
    return [tags = m_arguments](Commands& commands) { return commands.get(tags); };
}

std::optional<AskingLine::Command> AskingLine::bindSet(std::string& error) const {
    const auto assignments = Assignment::parseAll(m_arguments, error);
    if (!assignments) {
        return std::nullopt;
    }
    return [all = *assignments](Commands& commands) { return commands.set(all); };
}

std::optional<AskingLine::Command> AskingLine::bindSoftware(std::string& /*error*/) const {
    return [](Commands& commands) { return commands.software(); };
}

std::optional<AskingLine::Command> AskingLine::bindSchema(std::string& /*error*/) const {
    return [name = m_name](Commands& commands) { return commands.schema(name); };
}

std::optional<AskingLine::Command> AskingLine::bindSchemaOf(std::string& /*error*/) const {
    return [tag = m_name](Commands& commands) { return commands.schemaOf(tag); };
}

std::optional<AskingLine::Command> AskingLine::bindInvalidateCache(std::string& /*error*/) const {
    return [](Commands& commands) { return commands.invalidateCache(); };
}

std::optional<AskingLine::Command> AskingLine::bindBusy(std::string& error) const {
    const bool shows = m_action == "show";
    if (shows != m_number.empty()) {
        error = shows ? "'show' takes no bits" : "'" + m_action + "' needs the bits";
        return std::nullopt;
    }
    if (shows) {
        return [](Commands& commands) { return commands.showBusy(); };
    }
    const std::optional<unsigned> bits = BusyMask::parse(m_number, error);
    if (!bits) {
        return std::nullopt;
    }
    return [bits = *bits, sets = m_action == "set"](Commands& commands) {
        return sets ? commands.setBusy(bits) : commands.clearBusy(bits);
    };
}

std::optional<AskingLine::Command> AskingLine::bindTrap(std::string& error) const {
    return m_trap.bind(error);
}

std::optional<AskingLine::Command> AskingLine::bindLimits(std::string& /*error*/) const {
    return [fileType = m_name](Commands& commands) { return commands.limits(fileType); };
}

std::optional<AskingLine::Command> AskingLine::bindDownloadStatus(std::string& /*error*/) const {
    return [type = m_name, file = m_fileName](Commands& commands) {
        return commands.downloadStatus(type, file);
    };
}

std::optional<AskingLine::Command> AskingLine::bindValidate(std::string& /*error*/) const {
    return [type = m_name, file = m_fileName](Commands& commands) {
        return commands.validate(type, file);
    };
}

std::optional<AskingLine::Command> AskingLine::bindFactoryReset(std::string& /*error*/) const {
    return [readsInput = m_readsPassword](Commands& commands) {
        return commands.factoryReset([readsInput](std::string& error) {
            return Commands::askForPassword(readsInput, error);
        });
    };
}

std::optional<AskingLine::Command> AskingLine::bindReboot(std::string& /*error*/) const {
    return [reason = m_name](Commands& commands) { return commands.reboot(reason); };
}

std::optional<AskingLine::Command> AskingLine::bindResetUserData(std::string& /*error*/) const {
    return [](Commands& commands) { return commands.resetUserData(); };
}

std::optional<AskingLine::Command> AskingLine::bindCall(std::string& error) const {
    std::vector<Parameter> parameters;
    for (const std::string& argument : m_arguments) {
        const auto parameter = ParameterArgument::parse(argument, error);
        if (!parameter) {
            return std::nullopt;
        }
        parameters.push_back(*parameter);
    }
    return
        [name = m_name, parameters](Commands& commands) { return commands.call(name, parameters); };
}

}  // namespace vireo
