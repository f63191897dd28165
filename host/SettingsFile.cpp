#include "SettingsFile.h"

#include <CLI/CLI.hpp>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <optional>
#include <set>
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

/// Reads one line after the other. The first fault ends it; `fault` names it.
class SettingsReader {
public:
    SettingsReader(CLI::App& app, std::string& fault) : m_app(app), m_fault(fault) {}

    bool readLine(std::string_view line) {
        const std::string_view content = trimmed(line);
        if (content.empty() || content.front() == '#') {
            return true;
        }
        const std::size_t equals = content.find('=');
        if (equals == std::string_view::npos) {
            return fail("\"" + std::string(content) + "\" is no setting (key = value)");
        }
        const std::string key(trimmed(content.substr(0, equals)));
        const std::optional<std::string> value = readValue(trimmed(content.substr(equals + 1)));
        if (!value) {
            return fail(key + ": no value, or a quote too many or too few");
        }
        return apply(key, *value);
    }

private:
    bool apply(const std::string& key, const std::string& value) {
        CLI::Option* option = m_app.get_option_no_throw("--" + key);
        if (option == nullptr) {
            return fail("unknown key \"" + key + "\"");
        }
        if (!option->get_configurable()) {
            return fail(key + ": can only be given on the command line");
        }
        if (!m_seen.insert(key).second && option->get_items_expected_max() == 1) {
            return fail(key + ": the key is there twice");
        }
        try {
            option->add_result(value);
            option->run_callback();
            return true;
        } catch (const CLI::ConversionError&) {
            return fail(key + ": \"" + value + "\" is not a value of this type");
        } catch (const CLI::ParseError& error) {
            return fail(std::string(error.what()).substr(2));  // without the dashes of the option
        }
    }

    bool fail(std::string fault) {
        m_fault = std::move(fault);
        return false;
    }

    CLI::App& m_app;
    std::string& m_fault;
    std::set<std::string> m_seen;
};

}  // namespace

bool SettingsFile::apply(const std::string& path, CLI::App& app, std::string& error) {
    std::error_code ignored;
    std::ifstream file(path);
    if (!file || !std::filesystem::is_regular_file(path, ignored)) {
        error = "cannot read the settings file " + path + ": " +
                (file ? "it is no regular file" : std::generic_category().message(errno));
        return false;
    }
    std::string fault;
    SettingsReader reader(app, fault);
    std::string line;
    for (unsigned number = 1; std::getline(file, line); ++number) {
        if (!reader.readLine(line)) {
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
