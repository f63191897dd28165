#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Commands.h"
#include "ExitCode.h"
#include "TrapLine.h"

namespace vireo {

/// The part of the command line for the commands that ask the service and end, but for those about
/// files of users.
class AskingLine {
public:
    using Command = std::function<ExitCode(Commands&)>;

    /// Declares the commands; this object stays where it is until the line is parsed.
    void declare(CLI::App& app);

    /// What the line stands for, which names one of the commands; none, with `error`, when its
    /// arguments are wrong.
    std::optional<Command> bind(std::string& error) const { return (this->*m_bind)(error); }

private:
    using Binder = std::optional<Command> (AskingLine::*)(std::string& error) const;

    CLI::App& addCommand(CLI::App& app, const char* name, const char* description, Binder binder);
    CLI::App& addFileCommand(CLI::App& app, const char* name, const char* description,
                             Binder binder);
    void declareItems(CLI::App& app);
    void declareSchemas(CLI::App& app);
    void declareBusy(CLI::App& app);
    void declareFiles(CLI::App& app);
    void declareMaintenance(CLI::App& app);
    void declareCall(CLI::App& app);

    std::optional<Command> bindGet(std::string& error) const;
    std::optional<Command> bindSet(std::string& error) const;
    std::optional<Command> bindSoftware(std::string& error) const;
    std::optional<Command> bindSchema(std::string& error) const;
    std::optional<Command> bindSchemaOf(std::string& error) const;
    std::optional<Command> bindInvalidateCache(std::string& error) const;
    std::optional<Command> bindBusy(std::string& error) const;
    std::optional<Command> bindTrap(std::string& error) const;
    std::optional<Command> bindLimits(std::string& error) const;
    std::optional<Command> bindDownloadStatus(std::string& error) const;
    std::optional<Command> bindValidate(std::string& error) const;
    std::optional<Command> bindFactoryReset(std::string& error) const;
    std::optional<Command> bindReboot(std::string& error) const;
    std::optional<Command> bindResetUserData(std::string& error) const;
    std::optional<Command> bindCall(std::string& error) const;

    Binder m_bind = nullptr;
    std::string m_name;             // of a method, schema, item or file type; why to reboot
    std::string m_action = "show";  // of "busy"
    std::string m_number;
    std::string m_fileName;
    std::vector<std::string> m_arguments;  // of the command
    bool m_readsPassword = false;
    TrapLine m_trap;
};

}  // namespace vireo
