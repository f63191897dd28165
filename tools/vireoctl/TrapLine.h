#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <optional>
#include <string>

#include "Commands.h"

namespace vireo {

/// The part of the command line that raises traps: `trap generic DEST N`, and `trap specific DEST
/// [FILE]` with the text form of a trap in a file or on standard input.
class TrapLine {
public:
    using Command = std::function<ExitCode(Commands&)>;

    /// Adds it to `app`; `chosen` is called when it is on the line.
    void declare(CLI::App& app, std::function<void()> chosen);
    /// What it stands for; none, with `error`, when the file cannot be read.
    std::optional<Command> bind(std::string& error) const;

private:
    std::optional<int> destination(std::string& error) const;

    std::string m_kind;
    std::string m_dest;
    std::string m_rest;
};

}  // namespace vireo
