#include "support/ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <stdexcept>

namespace vireo::test {
namespace {

/// Moves what is there to `text` and closes at the end of file.
void drain(int& descriptor, std::string& text) {
    char buffer[4096];
    const ssize_t got = ::read(descriptor, buffer, sizeof buffer);
    if (got > 0) {
        text.append(buffer, static_cast<std::size_t>(got));
    } else {
        ::close(descriptor);
        descriptor = -1;
    }
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& command) {
    std::vector<char*> arguments;
    for (const std::string& word : command) {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);
    int out[2];
    int err[2];
    if (::pipe2(out, O_CLOEXEC) != 0 || ::pipe2(err, O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    m_pid = ::fork();
    if (m_pid == 0) {
        ::dup2(::open("/dev/null", O_RDONLY | O_CLOEXEC), STDIN_FILENO);
        ::dup2(out[1], STDOUT_FILENO);
        ::dup2(err[1], STDERR_FILENO);
        ::execvp(arguments[0], arguments.data());
        ::_exit(127);
    }
    ::close(out[1]);
    ::close(err[1]);
    m_out = out[0];
    m_err = err[0];
}

ChildProcess::~ChildProcess() {
    if (m_pid > 0) {
        kill(SIGKILL);
        ::waitpid(m_pid, nullptr, 0);
    }
    closePipes();
}

void ChildProcess::closePipes() {
    for (int* descriptor : {&m_out, &m_err}) {
        if (*descriptor >= 0) {
            ::close(*descriptor);
            *descriptor = -1;
        }
    }
}

bool ChildProcess::readLine(int descriptor, std::string& line) {
    line.clear();
    char c = 0;
    while (descriptor >= 0 && ::read(descriptor, &c, 1) == 1) {
        if (c == '\n') {
            return true;
        }
        line.push_back(c);
    }
    return false;
}

void ChildProcess::kill(int signal) const {
    if (m_pid > 0) {
        ::kill(m_pid, signal);
    }
}

Outcome ChildProcess::finish() {
    Outcome outcome;
    while (m_out >= 0 || m_err >= 0) {
        pollfd waiting[2] = {{m_out, POLLIN, 0}, {m_err, POLLIN, 0}};
        ::poll(waiting, 2, -1);
        if (waiting[0].revents != 0) {
            drain(m_out, outcome.out);
        }
        if (waiting[1].revents != 0) {
            drain(m_err, outcome.err);
        }
    }
    int status = 0;
    ::waitpid(m_pid, &status, 0);
    m_pid = -1;
    outcome.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return outcome;
}

Outcome ChildProcess::run(const std::vector<std::string>& command) {
    return ChildProcess(command).finish();
}

}  // namespace vireo::test
