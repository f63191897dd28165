#pragma once

#include <fstream>
#include <string>
#include <vector>

#include "support/ChildProcess.h"

namespace vireo::test {

/// A mount namespace for one process, so that it meets a read-only or a full disk. Works for the
/// administrator and, where the kernel allows it, for every user.
class Enclosure {
public:
    /// Whether such a namespace can be made here.
    static bool isPossible() {
        return ChildProcess::run({"bwrap", "--dev-bind", "/", "/", "true"}).exitCode == 0 &&
               ChildProcess::run({"unshare", "-Urm", "true"}).exitCode == 0;
    }

    /// The wrapper of a process that finds `directory` read-only.
    static std::vector<std::string> readOnly(const std::string& directory) {
        return {"bwrap", "--dev-bind", "/", "/", "--ro-bind", directory, directory, "--"};
    }

    /// The same, until `makeWritable`.
    static std::vector<std::string> readOnlyAtFirst(const std::string& directory) {
        return {"unshare",
                "-Urm",
                "sh",
                "-c",
                "mount --bind \"$0\" \"$0\" && mount -o remount,bind,ro \"$0\" && exec \"$@\"",
                directory};
    }
    static bool makeWritable(pid_t inside, const std::string& directory) {
        return ChildProcess::run({"nsenter", "-t", std::to_string(inside), "-U", "-m",
                                  "--preserve-credentials", "mount", "-o", "remount,bind,rw",
                                  directory})
                   .exitCode == 0;
    }

    /// The wrapper of a process that finds a disk of a few megabytes at `directory`, with a copy of
    /// `content` and full to the last block.
    static std::vector<std::string> fullDisk(const std::string& directory,
                                             const std::string& content) {
        const std::string fill = "cp -r '" + content + "/.' '" + directory +
                                 "' && { cat /dev/zero > '" + directory +
                                 "/ballast' 2>/dev/null; exec \"$@\"; }";
        return {"bwrap",   "--dev-bind", "/",  "/",  "--perms", "0700", "--size", "4194304",
                "--tmpfs", directory,    "--", "sh", "-c",      fill,   "sh"};
    }

    /// Makes room on the full disk of the process `inside`, or fills it again.
    static bool makeRoom(pid_t inside, const std::string& directory) {
        return std::remove(seenBy(inside, directory + "/ballast").c_str()) == 0;
    }
    static void fill(pid_t inside, const std::string& directory) {
        std::ofstream ballast(seenBy(inside, directory + "/ballast"), std::ios::binary);
        const std::string block(4096, '\0');
        while (ballast.write(block.data(), static_cast<std::streamsize>(block.size())).flush()) {
        }
    }

    /// A path of the process `inside` as others reach it.
    static std::string seenBy(pid_t inside, const std::string& path) {
        return "/proc/" + std::to_string(inside) + "/root" + path;
    }
};

}  // namespace vireo::test
