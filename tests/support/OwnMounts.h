#pragma once

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <string>

namespace vireo::test {

/// Runs a part of a test in a process of its own that mounts as it likes, so that the code under
/// test meets a disk that is read-only or full. Works for the administrator and, where the kernel
/// allows it, for every user. Only for tests that have no further thread at that moment.
class OwnMounts {
public:
    static bool arePossible() {
        return run([] { return true; });
    }

    /// Whether `check` answered true in the process that was made.
    template <class Check>
    static bool run(Check check) {
        std::fflush(nullptr);
        const pid_t child = ::fork();
        if (child == 0) {
            ::_exit(separate() && check() ? 0 : 1);
        }
        int status = 0;
        return child > 0 && ::waitpid(child, &status, 0) == child && WIFEXITED(status) &&
               WEXITSTATUS(status) == 0;
    }

    // Inside of `run`.

    /// With room for so much, and for few files.
    static bool mountDisk(const std::string& directory, unsigned kilobytes) {
        const std::string size = "mode=0700,nr_inodes=32,size=" + std::to_string(kilobytes) + "k";
        return ::mount("tmpfs", directory.c_str(), "tmpfs", 0, size.c_str()) == 0;
    }
    static bool makeReadOnly(const std::string& directory) {
        return ::mount(directory.c_str(), directory.c_str(), nullptr, MS_BIND, nullptr) == 0 &&
               ::mount(nullptr, directory.c_str(), nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY,
                       nullptr) == 0;
    }

private:
    static bool separate() {
        const std::string user = "0 " + std::to_string(::geteuid()) + " 1";
        const std::string group = "0 " + std::to_string(::getegid()) + " 1";
        return ::unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0 &&
               write("/proc/self/setgroups", "deny") && write("/proc/self/uid_map", user) &&
               write("/proc/self/gid_map", group) &&
               ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
    }
    static bool write(const char* path, const std::string& text) {
        const int file = ::open(path, O_WRONLY | O_CLOEXEC);
        const bool isWritten = file >= 0 && ::write(file, text.data(), text.size()) ==
                                                static_cast<ssize_t>(text.size());
        ::close(file);
        return isWritten;
    }
};

}  // namespace vireo::test
