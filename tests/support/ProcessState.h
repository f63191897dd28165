#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

namespace vireo::test {

/// Whether the programs under test need several times the memory that they need by themselves.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool kIsSanitized = true;
#else
inline constexpr bool kIsSanitized = false;
#endif

/// The most memory that a running process ever had at a time, in KiB.
inline long peakMemory(pid_t process) {
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    long kilobytes = -1;
    for (std::string word; status >> word && kilobytes < 0;) {
        if (word == "VmHWM:") {
            status >> kilobytes;
        }
    }
    return kilobytes;
}

/// How many descriptors a running process has open.
inline long openDescriptors(pid_t process) {
    std::error_code ignored;
    const std::filesystem::directory_iterator all("/proc/" + std::to_string(process) + "/fd",
                                                  ignored);
    return std::distance(begin(all), end(all));
}

/// Waits for something that another process does in its own time; false after half a minute.
template <class Condition>
bool eventually(Condition isSo) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!isSo()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

}  // namespace vireo::test
