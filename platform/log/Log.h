#pragma once

#include <atomic>
#include <exception>

#include "Visibility.h"

namespace vireo {

// Log levels as the phone counts them.
constexpr int kLogError = 2;
constexpr int kLogWarning = 3;
constexpr int kLogInfo = 4;
constexpr int kLogDebug = 5;
constexpr int kLogDump = 6;
constexpr int kLogReboot = 7;  ///< why the phone was rebooted, once more

/// The highest level that is written; 0 writes nothing.
extern VIREO_API std::atomic<int> g_logLevel;

/// Whether lines of `level` are written. One load and one branch.
inline bool loggingOnUni(int level) noexcept {
    return level <= g_logLevel.load(std::memory_order_relaxed);
}

/// Sets the highest level that is written.
VIREO_API void setLogLevel(int level) noexcept;

/// Formats and writes one line. Callers guard it with `loggingOnUni`; it does not test again.
/// Never throws; a line over 64 KiB is cut there and says so.
VIREO_API void logAppUni(const char* component, const char* file, int level, int line,
                         const char* format, ...) noexcept __attribute__((format(printf, 5, 6)));

/// Logs a caught exception at error level: "<where>: <what>".
VIREO_API void logExc(const char* component, const char* file, int line, const char* where,
                      const std::exception& exception) noexcept;
/// Records an event that has to be accounted for, such as the reason of a reboot: `text`, and
/// `detail` unless it is empty. `severity` is a log level; 1, above all errors, is written unless
/// nothing is.
VIREO_API void logExc(const char* text, const char* detail, const char* component, int line,
                      int severity) noexcept;

}  // namespace vireo
