#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace vireo::test {

/// What a finished program left.
struct Outcome {
    int exitCode = -1;  ///< -1: ended by a signal
    std::string out;
    std::string err;
};

/// A child process that reads nothing, with its standard output and standard error in pipes.
class ChildProcess {
public:
    explicit ChildProcess(const std::vector<std::string>& command);
    /// Kills it if it still runs.
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    pid_t pid() const { return m_pid; }
    /// Reads standard output up to and including the next line end; false at its end.
    bool readLine(std::string& line) const { return readLine(m_out, line); }
    /// The same of standard error.
    bool readErrorLine(std::string& line) const { return readLine(m_err, line); }
    void kill(int signal) const;
    /// Takes the rest of both outputs and waits for the end.
    Outcome finish();

    /// Runs a program to its end.
    static Outcome run(const std::vector<std::string>& command);

private:
    static bool readLine(int descriptor, std::string& line);
    void closePipes();

    pid_t m_pid = -1;
    int m_out = -1;
    int m_err = -1;
};

}  // namespace vireo::test
