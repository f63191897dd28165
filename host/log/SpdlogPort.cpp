#include "log/SpdlogPort.h"

#include <spdlog/fmt/fmt.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/sinks/stdout_sinks.h>
#include <spdlog/spdlog.h>
#include <sys/stat.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <system_error>

#include "log/Log.h"
#include "log/SecretMask.h"

namespace vireo {
namespace {

struct LevelName {
    spdlog::level::level_enum level;
    std::string_view word;
};

LevelName nameOf(int level) {
    switch (level) {
        case kLogError:
            return {spdlog::level::err, "error"};
        case kLogWarning:
            return {spdlog::level::warn, "warning"};
        case kLogInfo:
            return {spdlog::level::info, "info"};
        case kLogDebug:
            return {spdlog::level::debug, "debug"};
        default:
            return level < kLogError ? LevelName{spdlog::level::err, "error"}
                                     : LevelName{spdlog::level::trace, "dump"};
    }
}

/// Sees to it that nobody else reads the file: lines can hold settings.
void makePrivate(const spdlog::filename_t& /*file*/, std::FILE* opened) {
    struct stat status {};
    const int descriptor = ::fileno(opened);
    if (::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)) {
        ::fchmod(descriptor, 0600);
    }
}

/// Throws when the file cannot be written.
spdlog::sink_ptr openFile(const std::string& file, const LogOptions& options) {
    spdlog::file_event_handlers handlers;
    handlers.after_open = makePrivate;
    std::error_code ignored;
    const auto type = std::filesystem::status(file, ignored).type();
    if (type == std::filesystem::file_type::regular ||
        type == std::filesystem::file_type::not_found) {
        return std::make_shared<spdlog::sinks::rotating_file_sink_mt>(
            file, options.maximumFileBytes, options.keptFiles, false, handlers);
    }
    return std::make_shared<spdlog::sinks::basic_file_sink_mt>(file, false, handlers);
}

bool isControl(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7f;
}

void appendControl(fmt::memory_buffer& out, char c) {
    switch (c) {
        case '\n':
            out.append(std::string_view("\\n"));
            break;
        case '\r':
            out.append(std::string_view("\\r"));
            break;
        case '\t':
            out.append(std::string_view("\\t"));
            break;
        default:
            fmt::format_to(fmt::appender(out), "\\x{:02x}", static_cast<unsigned char>(c));
    }
}

void appendVisibly(fmt::memory_buffer& out, std::string_view text) {
    std::size_t start = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (isControl(text[i])) {
            out.append(text.substr(start, i - start));
            appendControl(out, text[i]);
            start = i + 1;
        }
    }
    out.append(text.substr(start));
}

/// Whether the line that this thread writes was lost.
thread_local bool g_isLineLost = false;

/// Says on standard error that lines are lost, once a minute.
void reportLostLines(const std::string& reason) {
    g_isLineLost = true;
    using Clock = std::chrono::steady_clock;
    static constinit std::atomic<Clock::rep> nextTime{0};
    const Clock::time_point now = Clock::now();
    Clock::rep due = nextTime.load();
    if (now.time_since_epoch().count() >= due &&
        nextTime.compare_exchange_strong(
            due, (now + std::chrono::minutes(1)).time_since_epoch().count())) {
        std::fprintf(stderr, "vireod: log lines are lost: %s\n", reason.c_str());
    }
}

/// Loggers are known by name to the thread that flushes them.
std::string newLoggerName() {
    static constinit std::atomic<unsigned> count{0};
    return "vireo-" + std::to_string(count.fetch_add(1, std::memory_order_relaxed));
}

}  // namespace

SpdlogPort::SpdlogPort(std::shared_ptr<spdlog::logger> logger, const LogOptions& options)
    : m_logger(std::move(logger)), m_masksSecrets(options.masksSecrets) {
    // Which levels are written was decided before a line comes here.
    m_logger->set_level(spdlog::level::trace);
    m_logger->set_pattern("%Y-%m-%d %H:%M:%S.%e %v");
    m_logger->flush_on(spdlog::level::err);
    m_logger->set_error_handler(reportLostLines);
    spdlog::register_logger(m_logger);
    spdlog::flush_every(std::chrono::seconds(options.flushSeconds));
}

SpdlogPort::~SpdlogPort() {
    spdlog::drop(m_logger->name());
    m_logger->flush();
}

std::unique_ptr<SpdlogPort> SpdlogPort::toStandardError(const LogOptions& options) {
    return std::unique_ptr<SpdlogPort>(
        new SpdlogPort(std::make_shared<spdlog::logger>(
                           newLoggerName(), std::make_shared<spdlog::sinks::stderr_sink_mt>()),
                       options));
}

std::unique_ptr<SpdlogPort> SpdlogPort::toFile(const std::string& file, std::string& error,
                                               const LogOptions& options) {
    try {
        auto logger = std::make_shared<spdlog::logger>(newLoggerName(), openFile(file, options));
        return std::unique_ptr<SpdlogPort>(new SpdlogPort(std::move(logger), options));
    } catch (const std::exception& exception) {
        error = "cannot write the log file \"" + file + "\": " + exception.what();
        return nullptr;
    }
}

void SpdlogPort::write(std::string_view component, std::string_view file, int level, int line,
                       std::string_view text) noexcept {
    try {
        const LevelName name = nameOf(level);
        fmt::memory_buffer out;
        fmt::format_to(fmt::appender(out), "{} [{}] {}:{} ", name.word, component, file, line);
        std::string masked;
        appendVisibly(out, m_masksSecrets && SecretMask::apply(text, masked) ? masked : text);
        g_isLineLost = false;
        m_logger->log(name.level, spdlog::string_view_t(out.data(), out.size()));
        if (g_isLineLost && level <= kLogError) {
            std::fprintf(stderr, "vireod: %.*s\n", static_cast<int>(out.size()), out.data());
        }
    } catch (...) {
        // Deliberate: a line that cannot be written has nowhere to be reported.
    }
}

}  // namespace vireo
