#include "files/PartialName.h"

#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <system_error>

#include "log/Log.h"

namespace vireo {
namespace {

void logLine(int level, int line, const std::string& text) {
    if (loggingOnUni(level)) {
        logAppUni("Files", "./host/files/PartialName", level, line, "%s", text.c_str());
    }
}

bool isFileOrLink(const std::filesystem::directory_entry& entry) {
    std::error_code ignored;
    const std::filesystem::file_status status = entry.symlink_status(ignored);
    return std::filesystem::is_regular_file(status) || std::filesystem::is_symlink(status);
}

}  // namespace

std::string newPartialName() {
    static std::atomic<unsigned> count{0};
    return std::string(kPartialPrefix) + std::to_string(::getpid()) + "-" +
           std::to_string(count.fetch_add(1));
}

std::mutex& namesLock() {
    static std::mutex lock;
    return lock;
}

void removePartialFiles(const std::string& rootDirectory) {
    namespace fs = std::filesystem;
    std::error_code failure;
    fs::recursive_directory_iterator entry(rootDirectory,
                                           fs::directory_options::skip_permission_denied, failure);
    for (; !failure && entry != fs::recursive_directory_iterator(); entry.increment(failure)) {
        if (!isPartialName(entry->path().filename().native()) || !isFileOrLink(*entry)) {
            continue;
        }
        std::error_code kept;
        fs::remove(entry->path(), kept);
        logLine(kept ? kLogError : kLogWarning, __LINE__,
                entry->path().string() + ", the rest of interrupted work, " +
                    (kept ? "cannot be removed: " + kept.message() : "was removed"));
    }
    // Where there is no directory there is no such file either.
    if (failure && failure != std::errc::no_such_file_or_directory &&
        failure != std::errc::not_a_directory) {
        logLine(kLogError, __LINE__,
                "cannot look for the rest of interrupted work below " + rootDirectory + ": " +
                    failure.message());
    }
}

}  // namespace vireo
