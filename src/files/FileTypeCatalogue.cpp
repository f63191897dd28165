#include "files/FileTypeCatalogue.h"

#include <algorithm>
#include <iterator>

namespace vireo {
namespace {

constexpr FileTypeRow kRows[] = {
    {LocalMgmtIfc::FILETYPE_INVALID, "", 0, 0},
    {LocalMgmtIfc::FILETYPE_SOFTWARE, "swBind", 0, 0},
    {LocalMgmtIfc::FILETYPE_MUSIC_ON_HOLD, "moh", 0, 0},
    {LocalMgmtIfc::FILETYPE_PICTURE, "images", 20, 15},
    {LocalMgmtIfc::FILETYPE_LOGO, "logo", 0, 0},
    {LocalMgmtIfc::FILETYPE_MIDLET, "midlets", -1, 15},
    {LocalMgmtIfc::FILETYPE_LDAP, "ldap", 0, 0},
    {LocalMgmtIfc::FILETYPE_TONE, "tone", 0, 0},
    {LocalMgmtIfc::FILETYPE_RESERVED_8, "", 0, 0},
    {LocalMgmtIfc::FILETYPE_SCREENSAVER, "screensaver", 0, 0},
    {LocalMgmtIfc::FILETYPE_RESERVED_10, "", 0, 0},
    {LocalMgmtIfc::FILETYPE_RINGER, "ringer", 0, 0},
    {LocalMgmtIfc::FILETYPE_HELP, "help", 0, 0},
    {LocalMgmtIfc::FILETYPE_JAR, "jar", 0, 0},
    {LocalMgmtIfc::FILETYPE_JAD, "jad", 0, 0},
    {LocalMgmtIfc::FILETYPE_PHD, "phd", 0, 0},
    {LocalMgmtIfc::FILETYPE_VR_AUDIO, "vraudio", 0, 0},
    {LocalMgmtIfc::FILETYPE_VR_PATTERN, "vrpat", 0, 0},
};

}  // namespace

const FileTypeRow& FileTypeCatalogue::row(LocalMgmtIfc::eFiletype type) {
    const auto* found = std::find_if(std::begin(kRows), std::end(kRows),
                                     [type](const FileTypeRow& each) { return each.type == type; });
    return found != std::end(kRows) ? *found : kRows[0];
}

const FileTypeRow* FileTypeCatalogue::findByXmlName(std::string_view xmlName) {
    const auto* found =
        std::find_if(std::begin(kRows), std::end(kRows),
                     [xmlName](const FileTypeRow& each) { return each.xmlName == xmlName; });
    return found != std::end(kRows) && !xmlName.empty() ? found : nullptr;
}

}  // namespace vireo
