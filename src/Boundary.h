#pragma once

#include <exception>
#include <utility>

#include "LogMacros.h"

namespace vireo {

/// Runs `call` and answers its result; an exception becomes one error line that starts with `what`
/// and the result `onFailure`. The one place of the service that catches.
template <class Result, class Call>
Result guarded(const char* what, Result onFailure, Call&& call) noexcept {
    try {
        return std::forward<Call>(call)();
    } catch (const std::exception& exception) {
        VCMS_LOG(kLogError, "%s: %s", what, exception.what());
    } catch (...) {
        VCMS_LOG(kLogError, "%s: unknown exception", what);
    }
    return onFailure;
}

/// The same for a call without a result.
template <class Call>
void guardedCall(const char* what, Call&& call) noexcept {
    guarded(what, false, [&call] {
        call();
        return true;
    });
}

/// Runs `call`; an exception is logged as the message layer logs it: its text alone.
template <class Call>
void guardedMessage(const char* component, Call&& call) noexcept {
    try {
        std::forward<Call>(call)();
    } catch (const std::exception& exception) {
        VIREO_LOG(component, kLogError, "%s\n", exception.what());
    } catch (...) {
        VIREO_LOG(component, kLogError, "%s\n", "unknown exception");
    }
}

}  // namespace vireo
