#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "Ports.h"
#include "Visibility.h"

namespace spdlog {
class logger;
}

namespace vireo {

/// Log lines as text, one per line:
///
///   2026-11-22 10:00:00.123 error [Vireo Client Management] ./src/items/ItemReader:42 text
///
/// Control characters in the text are written as \n, \r, \t or \x01, so that one line stays one
/// line. Error lines are on disk or screen before `write` returns, others at most the
/// flush interval later. Lines that cannot be written, such as on a full disk, are lost; standard
/// error hears of it once a minute, and the process goes on.
class VIREO_API SpdlogPort : public LogPort {
public:
    /// Lines that are no errors wait for `flushInterval` at most.
    static std::unique_ptr<SpdlogPort> toStandardError(
        std::chrono::seconds flushInterval = kFlushInterval);
    /// Appends to `file`, which is created with its directories when it is missing. Null with a
    /// one-line `error` that names the file.
    static std::unique_ptr<SpdlogPort> toFile(
        const std::string& file, std::string& error,
        std::chrono::seconds flushInterval = kFlushInterval);
    ~SpdlogPort() override;

    void write(std::string_view component, std::string_view file, int level, int line,
               std::string_view text) noexcept override;

private:
    static constexpr std::chrono::seconds kFlushInterval{1};

    SpdlogPort(std::shared_ptr<spdlog::logger> logger, std::chrono::seconds flushInterval);

    std::shared_ptr<spdlog::logger> m_logger;
};

}  // namespace vireo
