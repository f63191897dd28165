#include "passwords/PasswordService.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "log/Log.h"
#include "passwords/PasswordHash.h"

namespace vireo {
namespace {

constexpr const char* kName = PasswordDirectory::kFactoryReset;

void logLine(int level, int line, const std::string& text) {
    if (loggingOnUni(level)) {
        logAppUni("PasswordService", "./host/passwords/PasswordService", level, line, "%s",
                  text.c_str());
    }
}

std::string secondsText(std::chrono::steady_clock::duration span) {
    return std::to_string(std::chrono::ceil<std::chrono::seconds>(span).count()) + " s";
}

}  // namespace

PasswordService::PasswordService(PasswordDirectory directory, Clock clock)
    : m_directory(std::move(directory)),
      m_clock(std::move(clock)),
      m_failures(m_directory.readFailures(kName)),
      m_next(m_clock() + waitAfter(m_failures)) {
    std::string ignored;  // it is said when a password is to be looked at
    m_directory.readHash(kName, m_hash, ignored);
}

std::chrono::seconds PasswordService::waitAfter(unsigned failures) {
    constexpr unsigned kFree = 2;
    constexpr unsigned kMostDoublings = 8;
    constexpr std::chrono::seconds kFirst(5);
    constexpr std::chrono::seconds kLongest(900);
    if (failures <= kFree) {
        return std::chrono::seconds(0);
    }
    return std::min(kFirst * (1U << std::min(failures - kFree - 1, kMostDoublings)), kLongest);
}

int PasswordService::verifyPassword(int kind, const std::string& password) {
    if (kind != kFactoryReset) {
        logLine(kLogWarning, __LINE__, "there are no passwords of kind " + std::to_string(kind));
        return eUnknownKind;
    }
    try {
        const std::lock_guard lock(m_mutex);
        return verify(password);
    } catch (const std::exception& exception) {
        logLine(kLogError, __LINE__, exception.what());
        return eUnreadable;
    }
}

PasswordService::eResult PasswordService::verify(const std::string& password) {
    std::string hash;
    std::string error;
    if (!m_directory.readHash(kName, hash, error)) {
        logLine(kLogError, __LINE__, error + ": the factory reset is refused");
        return eUnreadable;
    }
    if (hash.empty()) {
        logLine(kLogWarning, __LINE__,
                "no password is set for the factory reset, so it is refused (vireod "
                "--set-password factory-reset sets one)");
        return eNotSet;
    }
    if (hash != m_hash) {
        m_hash = hash;
        m_failures = 0;
        m_next = m_clock();
    }
    if (const Time now = m_clock(); now < m_next) {
        logLine(kLogWarning, __LINE__,
                "the password of the factory reset is not looked at for another " +
                    secondsText(m_next - now) + ", after " + std::to_string(m_failures) +
                    " wrong ones");
        return eTooSoon;
    }
    const bool isRight = PasswordHash::matches(password, hash);
    count(isRight ? 0 : m_failures + 1);
    return isRight ? eAccepted : eWrong;
}

void PasswordService::count(unsigned failures) {
    if (failures == m_failures) {
        return;
    }
    m_failures = failures;
    const std::chrono::seconds wait = waitAfter(failures);
    m_next = m_clock() + wait;
    std::string error;
    if (!m_directory.writeFailures(kName, failures, error)) {
        logLine(kLogError, __LINE__, error + ": wrong passwords are forgotten at the next start");
    }
    if (failures > 0) {
        logLine(kLogWarning, __LINE__,
                "wrong password for the factory reset, number " + std::to_string(failures) +
                    " in a row; the next one is looked at " +
                    (wait.count() > 0 ? "in " + secondsText(wait) : "at once"));
    }
}

}  // namespace vireo
