#include "FileTypes.h"

namespace vireo {
namespace {

constexpr struct {
    const char* name;
    LocalMgmtIfc::eFiletype type;
} kTypes[] = {
    {"images", LocalMgmtIfc::FILETYPE_PICTURE},
    {"moh", LocalMgmtIfc::FILETYPE_MUSIC_ON_HOLD},
    {"swBind", LocalMgmtIfc::FILETYPE_SOFTWARE},
    {"help", LocalMgmtIfc::FILETYPE_HELP},
    {"midlets", LocalMgmtIfc::FILETYPE_MIDLET},
    {"logo", LocalMgmtIfc::FILETYPE_LOGO},
    {"screensaver", LocalMgmtIfc::FILETYPE_SCREENSAVER},
    {"tone", LocalMgmtIfc::FILETYPE_TONE},
    {"ldap", LocalMgmtIfc::FILETYPE_LDAP},
    {"ringer", LocalMgmtIfc::FILETYPE_RINGER},
    {"jar", LocalMgmtIfc::FILETYPE_JAR},
    {"jad", LocalMgmtIfc::FILETYPE_JAD},
    {"phd", LocalMgmtIfc::FILETYPE_PHD},
    {"vraudio", LocalMgmtIfc::FILETYPE_VR_AUDIO},
    {"vrpat", LocalMgmtIfc::FILETYPE_VR_PATTERN},
};

}  // namespace

const std::vector<std::string>& FileTypes::names() {
    static const std::vector<std::string> all = [] {
        std::vector<std::string> names;
        for (const auto& each : kTypes) {
            names.emplace_back(each.name);
        }
        return names;
    }();
    return all;
}

LocalMgmtIfc::eFiletype FileTypes::find(std::string_view name) {
    for (const auto& each : kTypes) {
        if (name == each.name) {
            return each.type;
        }
    }
    return LocalMgmtIfc::FILETYPE_INVALID;
}

}  // namespace vireo
