#include "files/KeyValueFile.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string_view>
#include <system_error>

namespace vireo {
namespace {

constexpr std::string_view kBlanks = " \t\r";

std::string_view trimmed(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(kBlanks);
    if (begin == std::string_view::npos) {
        return {};
    }
    return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

/// What stands before a comment; nothing when a quote is left open or something follows it.
std::optional<std::string> readValue(std::string_view text) {
    if (!text.starts_with('"')) {
        const std::string_view value = trimmed(text.substr(0, text.find('#')));
        return value.empty() ? std::nullopt : std::optional<std::string>(value);
    }
    const std::size_t end = text.find('"', 1);
    if (end == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view rest = trimmed(text.substr(end + 1));
    return rest.empty() || rest.starts_with('#')
               ? std::optional<std::string>(text.substr(1, end - 1))
               : std::nullopt;
}

bool readLine(std::string_view line, const KeyValueFile::Taker& take, std::string& fault) {
    const std::string_view content = trimmed(line);
    if (content.empty() || content.front() == '#') {
        return true;
    }
    const std::size_t equals = content.find('=');
    if (equals == std::string_view::npos) {
        fault = "\"" + std::string(content) + "\" is no setting (key = value)";
        return false;
    }
    const std::string key(trimmed(content.substr(0, equals)));
    const std::optional<std::string> value = readValue(trimmed(content.substr(equals + 1)));
    if (!value) {
        fault = key + ": no value, or a quote too many or too few";
        return false;
    }
    return take(key, *value, fault);
}

}  // namespace

bool KeyValueFile::read(const std::string& path, const Taker& take, std::string& error) {
    std::error_code ignored;
    std::ifstream file(path);
    if (!file || !std::filesystem::is_regular_file(path, ignored)) {
        error = "cannot read the settings file " + path + ": " +
                (file ? "it is no regular file" : std::generic_category().message(errno));
        return false;
    }
    std::string fault;
    std::string line;
    for (unsigned number = 1; std::getline(file, line); ++number) {
        if (!readLine(line, take, fault)) {
            error = path + ", line " + std::to_string(number) + ": " + fault;
            return false;
        }
    }
    if (file.bad()) {
        error = "cannot read the settings file " + path;
        return false;
    }
    return true;
}

}  // namespace vireo
