#include "harness/Process.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fstream>
#include <system_error>
#include <utility>

#include "harness/Failure.h"

namespace vireo::bench {
namespace {

struct Pipe {
    Pipe() {
        if (::pipe2(ends, O_CLOEXEC) != 0) {
            failSystem("pipe");
        }
    }
    int ends[2];
    int readEnd() const { return ends[0]; }
    int writeEnd() const { return ends[1]; }
};

pid_t forkProcess() {
    std::fflush(nullptr);
    const pid_t pid = ::fork();
    if (pid < 0) {
        failSystem("fork");
    }
    if (pid == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    }
    return pid;
}

bool readLine(int descriptor, std::string& line) {
    line.clear();
    char c = 0;
    while (::read(descriptor, &c, 1) == 1) {
        if (c == '\n') {
            return true;
        }
        line.push_back(c);
    }
    return false;
}

double memoryOf(pid_t pid, const char* file, std::string_view name) {
    std::ifstream status("/proc/" + std::to_string(pid) + '/' + file);
    std::string word;
    while (status >> word) {
        if (double kibibytes = 0; word == name && status >> kibibytes) {
            return kibibytes * 1024;
        }
    }
    throw Failure("no memory of process " + std::to_string(pid));
}

template <class Body>
[[noreturn]] void runChild(Body&& body) {
    int status = 0;
    try {
        body();
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "bench: %s\n", exception.what());
        status = 1;
    }
    ::_exit(status);
}

}  // namespace

void failSystem(const std::string& what) {
    throw Failure(what + ": " + std::generic_category().message(errno));
}

Process::Process(Process&& other) noexcept
    : m_pid(std::exchange(other.m_pid, -1)), m_output(std::exchange(other.m_output, -1)) {}

Process& Process::operator=(Process&& other) noexcept {
    if (this != &other) {
        end();
        m_pid = std::exchange(other.m_pid, -1);
        m_output = std::exchange(other.m_output, -1);
    }
    return *this;
}

void Process::end() {
    if (m_pid > 0) {
        ::kill(m_pid, SIGKILL);
        ::waitpid(m_pid, nullptr, 0);
        m_pid = -1;
    }
    if (m_output >= 0) {
        ::close(m_output);
        m_output = -1;
    }
}

Process Process::run(const std::vector<std::string>& command, const std::string& ready,
                     const std::string& log) {
    std::vector<char*> arguments;
    for (const std::string& word : command) {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);
    const Pipe output;
    Process process(forkProcess());
    if (process.m_pid == 0) {
        ::dup2(::open("/dev/null", O_RDONLY | O_CLOEXEC), STDIN_FILENO);
        ::dup2(output.writeEnd(), STDOUT_FILENO);
        ::dup2(::open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600), STDERR_FILENO);
        ::execvp(arguments[0], arguments.data());
        std::fprintf(stderr, "bench: cannot run %s: %s\n", arguments[0], std::strerror(errno));
        ::_exit(127);
    }
    ::close(output.writeEnd());
    process.m_output = output.readEnd();
    std::string line;
    do {
        if (!readLine(process.m_output, line)) {
            throw Failure(command.front() + " ended before it was ready, see " + log);
        }
    } while (line.find(ready) == std::string::npos);
    return process;
}

Process Process::fork(const std::function<void(const std::function<void()>& ready)>& body) {
    const Pipe signal;
    Process process(forkProcess());
    if (process.m_pid == 0) {
        runChild([&] {
            body([&] { require(::write(signal.writeEnd(), "\n", 1) == 1, "nobody waits"); });
        });
    }
    ::close(signal.writeEnd());
    std::string line;
    const bool isReady = readLine(signal.readEnd(), line);
    ::close(signal.readEnd());
    require(isReady, "a process of the benchmark ended before it was ready");
    return process;
}

double measureInFork(const std::function<double()>& body) {
    const Pipe result;
    const pid_t pid = forkProcess();
    if (pid == 0) {
        runChild([&] {
            const double number = body();
            if (::write(result.writeEnd(), &number, sizeof number) != sizeof number) {
                failSystem("write");
            }
        });
    }
    ::close(result.writeEnd());
    double number = 0;
    const ssize_t got = ::read(result.readEnd(), &number, sizeof number);
    ::close(result.readEnd());
    ::waitpid(pid, nullptr, 0);
    require(got == sizeof number, "a measuring process ended early");
    return number;
}

void pinTo(int processor) {
    cpu_set_t set;
    CPU_ZERO(&set);
    CPU_SET(static_cast<unsigned>(processor), &set);
    if (::sched_setaffinity(0, sizeof set, &set) != 0) {
        failSystem("cannot bind to processor " + std::to_string(processor));
    }
}

AnyProcessor::AnyProcessor() {
    ::sched_getaffinity(0, sizeof m_before, &m_before);
    cpu_set_t all;
    std::memset(&all, 0xff, sizeof all);  // the kernel takes those that there are
    if (::sched_setaffinity(0, sizeof all, &all) != 0) {
        failSystem("sched_setaffinity");
    }
}

AnyProcessor::~AnyProcessor() {
    ::sched_setaffinity(0, sizeof m_before, &m_before);
}

int lastProcessor() {
    cpu_set_t set;
    CPU_ZERO(&set);
    if (::sched_getaffinity(0, sizeof set, &set) != 0) {
        failSystem("sched_getaffinity");
    }
    int last = 0;
    for (unsigned i = 0; i < CPU_SETSIZE; ++i) {
        if (CPU_ISSET(i, &set)) {
            last = static_cast<int>(i);
        }
    }
    return last;
}

double residentBytes(pid_t pid) {
    return memoryOf(pid, "smaps_rollup", "Rss:");
}

double peakBytes(pid_t pid) {
    return memoryOf(pid, "status", "VmHWM:");
}

}  // namespace vireo::bench
