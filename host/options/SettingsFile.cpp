#include "options/SettingsFile.h"

#include <CLI/CLI.hpp>
#include <set>

#include "files/KeyValueFile.h"

namespace vireo {
namespace {

/// Gives settings to the options of the same names.
class SettingsApplier {
public:
    explicit SettingsApplier(CLI::App& app) : m_app(app) {}

    bool apply(const std::string& key, const std::string& value, std::string& fault) {
        CLI::Option* option = m_app.get_option_no_throw("--" + key);
        if (option == nullptr) {
            fault = "unknown key \"" + key + "\"";
            return false;
        }
        if (!option->get_configurable()) {
            fault = key + ": can only be given on the command line";
            return false;
        }
        if (!m_seen.insert(key).second && option->get_items_expected_max() == 1) {
            fault = key + ": the key is there twice";
            return false;
        }
        try {
            option->add_result(value);
            option->run_callback();
            return true;
        } catch (const CLI::ConversionError&) {
            fault = key + ": \"" + value + "\" is not a value of this type";
        } catch (const CLI::ParseError& error) {
            fault = std::string(error.what()).substr(2);  // without the dashes of the option
        }
        return false;
    }

private:
    CLI::App& m_app;
    std::set<std::string> m_seen;
};

}  // namespace

bool SettingsFile::apply(const std::string& path, CLI::App& app, std::string& error) {
    SettingsApplier applier(app);
    return KeyValueFile::read(
        path,
        [&applier](const std::string& key, const std::string& value, std::string& fault) {
            return applier.apply(key, value, fault);
        },
        error);
}

}  // namespace vireo
