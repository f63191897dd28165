#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>

#include "Commands.h"
#include "ExitCode.h"

namespace vireo {

/// The part of the command line for the commands about files of users.
class FilesLine {
public:
    using Command = std::function<ExitCode(Commands&)>;

    /// Declares the commands; this object stays where it is until the line is parsed.
    void declare(CLI::App& app);

    /// The command that the line names; empty when it names none of these.
    const Command& command() const { return m_command; }

private:
    void declareList(CLI::App& files);
    void declareDelete(CLI::App& files);
    void declareUser(CLI::App& app);

    Command m_command;
    std::string m_type;
    std::string m_name;
    std::string m_user;
};

}  // namespace vireo
