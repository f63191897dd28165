#include "terminal/PasswordInput.h"

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "terminal/StopSignal.h"

namespace vireo {
namespace {

/// A terminal that shows nothing of what is typed while this lives.
class SilentTerminal {
public:
    explicit SilentTerminal(const char* path)
        : m_descriptor(::open(path, O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        if (m_descriptor < 0 || ::tcgetattr(m_descriptor, &m_before) != 0) {
            return;
        }
        termios silent = m_before;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO | ECHONL);
        // Stopped or thrown out by these keys, the program would leave the terminal silent.
        silent.c_cc[VSUSP] = _POSIX_VDISABLE;
        silent.c_cc[VQUIT] = _POSIX_VDISABLE;
        m_isSilent = ::tcsetattr(m_descriptor, TCSAFLUSH, &silent) == 0;
    }
    ~SilentTerminal() {
        if (m_isSilent) {
            ::tcsetattr(m_descriptor, TCSADRAIN, &m_before);
        }
        if (m_descriptor >= 0) {
            ::close(m_descriptor);
        }
    }
    SilentTerminal(const SilentTerminal&) = delete;
    SilentTerminal& operator=(const SilentTerminal&) = delete;

    bool isSilent() const { return m_isSilent; }
    int descriptor() const { return m_descriptor; }
    void write(const std::string& text) const { ::dprintf(m_descriptor, "%s", text.c_str()); }

private:
    const int m_descriptor;
    bool m_isSilent = false;
    termios m_before{};
};

}  // namespace

std::optional<std::string> PasswordInput::ask(const std::string& prompt, const StopSignal& stop,
                                              std::string& error, const char* terminal) {
    const SilentTerminal silent(terminal);
    if (!silent.isSilent()) {
        error = "there is no terminal to ask for the password; use --password-stdin";
        return std::nullopt;
    }
    silent.write(prompt);
    const std::optional<std::string> password = readLine(silent.descriptor(), stop, error);
    silent.write("\n");
    return password;
}

std::optional<std::string> PasswordInput::readLine(int input, const StopSignal& stop,
                                                   std::string& error) {
    constexpr int kForEver = -1;
    std::string line;
    for (;;) {
        pollfd waited[] = {{input, POLLIN, 0}, {stop.descriptor(), POLLIN, 0}};
        if (::poll(waited, 2, kForEver) < 0) {
            continue;
        }
        if (waited[1].revents != 0) {
            error = "interrupted";
            return std::nullopt;
        }
        char byte = 0;  // one at a time: what is behind the line is for somebody else
        const ssize_t got = ::read(input, &byte, 1);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0 && line.empty()) {
            error = "no password came in";
            return std::nullopt;
        }
        if (got <= 0 || byte == '\n') {
            return line;
        }
        line += byte;
    }
}

}  // namespace vireo
