#pragma once

#include <sched.h>
#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

namespace vireo::bench {

/// A process that the benchmark has started. It is killed, by its id, with this object, and by the
/// system should the benchmark itself end.
class Process {
public:
    Process() = default;
    /// Runs a program and waits until it writes a line that contains `ready` to its standard
    /// output, which is thrown away otherwise. Its standard error is appended to the file `log`.
    static Process run(const std::vector<std::string>& command, const std::string& ready,
                       const std::string& log);
    /// Runs `body` in a copy of this process and waits until it calls what it is given. The copy
    /// ends when `body` returns.
    static Process fork(const std::function<void(const std::function<void()>& ready)>& body);

    ~Process() { end(); }
    Process(Process&& other) noexcept;
    Process& operator=(Process&& other) noexcept;

    pid_t pid() const { return m_pid; }
    void end();

private:
    explicit Process(pid_t pid) : m_pid(pid) {}

    pid_t m_pid = -1;
    int m_output = -1;  // kept open, so that the program can go on writing
};

/// The number that `body` gives in a copy of this process, which has no memory to spare that
/// earlier measurements have left.
double measureInFork(const std::function<double()>& body);

/// Binds this process, and all that it starts from now on, to one processor.
void pinTo(int processor);
/// While it lives, this process and what it starts may run on every processor again.
class AnyProcessor {
public:
    AnyProcessor();
    ~AnyProcessor();
    AnyProcessor(const AnyProcessor&) = delete;
    AnyProcessor& operator=(const AnyProcessor&) = delete;

private:
    cpu_set_t m_before;
};

/// The last processor that this process may use; interrupts tend to go to the first.
int lastProcessor();

/// The memory of a process that is in the machine, in bytes.
double residentBytes(pid_t pid);
/// The most that it ever was.
double peakBytes(pid_t pid);

}  // namespace vireo::bench
