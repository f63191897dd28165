#include "options/OptionKinds.h"

#include <filesystem>

namespace vireo {

void declareAnswer(CLI::App& app, const char* name, bool& value, const char* description) {
    app.add_option_function<std::string>(
           name, [&value](const std::string& answer) { value = answer == "yes"; }, description)
        ->type_name("TEXT")
        ->check(CLI::IsMember({"yes", "no"}))
        ->default_str(value ? "yes" : "no");
}

void declareTime(CLI::App& app, const char* name, std::chrono::milliseconds& value, long long most,
                 const char* description) {
    app.add_option_function<long long>(
           name, [&value](const long long& count) { value = std::chrono::milliseconds(count); },
           description)
        ->type_name("N")
        ->check(CLI::Range(10LL, most))
        ->default_str(std::to_string(value.count()));
}

std::string checkBelow(const std::string& text) {
    const std::filesystem::path path(text);
    bool staysBelow = !text.empty() && path.is_relative() && path.has_filename();
    for (const std::filesystem::path& part : path) {
        staysBelow = staysBelow && part != "..";
    }
    return staysBelow ? std::string() : "\"" + text + "\" is no relative path without \"..\"";
}

}  // namespace vireo
