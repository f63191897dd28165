#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vireo {

/// A place for software. None stands for the software that the phone was installed with.
enum class Bank : char { eNone = '-', eA = 'a', eB = 'b' };

constexpr Bank otherBank(Bank bank) {
    return bank == Bank::eA ? Bank::eB : Bank::eA;
}

/// Which bank the phone starts from. As text it is one line, with a checksum at its end:
///
///     VIREO-BOOT 1 bank=b state=trial starts=0 fallback=a failed=- check=0123abcd
struct BootMarker {
    Bank bank = Bank::eNone;
    bool isTrial = false;         ///< it was not confirmed yet
    unsigned starts = 0;          ///< of the trial, counted before each of them
    Bank fallback = Bank::eNone;  ///< where to go back to when the trial fails
    Bank failed = Bank::eNone;    ///< whose trial has failed, or that was found damaged

    static constexpr unsigned kMostStarts = 9;

    std::string text() const;
    /// Nothing when it is not exactly what `text` makes.
    static std::optional<BootMarker> parse(std::string_view text);

    friend bool operator==(const BootMarker&, const BootMarker&) = default;
};

}  // namespace vireo
