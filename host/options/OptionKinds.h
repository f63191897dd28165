#pragma once

#include <CLI/CLI.hpp>
#include <chrono>
#include <string>

namespace vireo {

/// Declares an option for a number from `least` to `most`; its default is what `value` has.
template <class Number>
void declareNumber(CLI::App& app, const char* name, Number& value, Number least, Number most,
                   const char* description) {
    app.add_option(name, value, description)
        ->type_name("N")
        ->check(CLI::Range(least, most))
        ->capture_default_str();
}

/// Declares an option for "yes" or "no".
void declareAnswer(CLI::App& app, const char* name, bool& value, const char* description);

/// Declares an option for a time in milliseconds, of ten at least.
void declareTime(CLI::App& app, const char* name, std::chrono::milliseconds& value, long long most,
                 const char* description);

/// Nothing when `text` is a path that stays below the directory that it is relative to, or else
/// what is wrong.
std::string checkBelow(const std::string& text);

}  // namespace vireo
