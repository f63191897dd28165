#pragma once

#include <optional>
#include <string>

namespace vireo {

class StopSignal;

/// Takes a password from a person or a pipe. A command line is no place for one: others can see it.
class PasswordInput {
public:
    /// Asks on the terminal, which shows nothing of what is typed and is as before when this
    /// returns. None when a signal came or there is no terminal; `error` says which.
    static std::optional<std::string> ask(const std::string& prompt, const StopSignal& stop,
                                          std::string& error, const char* terminal = "/dev/tty");
    /// The first line of `input`, without its end. None when a signal came or there is none.
    static std::optional<std::string> readLine(int input, const StopSignal& stop,
                                               std::string& error);
};

}  // namespace vireo
