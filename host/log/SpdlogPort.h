#pragma once

#include <memory>
#include <string>

#include "Ports.h"
#include "Visibility.h"
#include "log/LogOptions.h"

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
/// error hears of it once a minute and gets the error lines, and the process goes on.
/// Secrets are left out of the lines unless the options say otherwise.
class VIREO_API SpdlogPort : public LogPort {
public:
    static std::unique_ptr<SpdlogPort> toStandardError(const LogOptions& options = {});
    /// Appends to `file`, which is created with its directories when it is missing. Null with a
    /// one-line `error` that names the file. What is no regular file is never renamed.
    static std::unique_ptr<SpdlogPort> toFile(const std::string& file, std::string& error,
                                              const LogOptions& options = {});
    ~SpdlogPort() override;

    void write(std::string_view component, std::string_view file, int level, int line,
               std::string_view text) noexcept override;

private:
    SpdlogPort(std::shared_ptr<spdlog::logger> logger, const LogOptions& options);

    std::shared_ptr<spdlog::logger> m_logger;
    const bool m_masksSecrets;
};

}  // namespace vireo
