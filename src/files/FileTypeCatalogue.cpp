#include "files/FileTypeCatalogue.h"

#include <algorithm>
#include <iterator>

#include "DownloadTags.h"
#include "LogMacros.h"

namespace vireo {
namespace {

using Type = LocalMgmtIfc;
using User = LocalMgmtIfc::eUsertype;

// clang-format off
constexpr FileTypeRow kRows[] = {
    {Type::FILETYPE_INVALID, "", "", "", 0, 0, FileCheck::eUnchecked, 0, false, false},
    {Type::FILETYPE_SOFTWARE, "swBind", "", "app", 0, 0, FileCheck::eAccepted, 0, false, true},
    {Type::FILETYPE_MUSIC_ON_HOLD, "moh", "music/", "moh", 0, 0, FileCheck::eMusicOnHold, 1'000'000, true, true},
    {Type::FILETYPE_PICTURE, "images", "images/", "pic", 20, 15, FileCheck::eSize, 300'000, true, true},
    {Type::FILETYPE_LOGO, "logo", "logos/", "lgo", 0, 0, FileCheck::eSize, 300'000, false, true},
    {Type::FILETYPE_MIDLET, "midlets", "midlets/", "jav", -1, 15, FileCheck::eUnchecked, 0, false, true},
    {Type::FILETYPE_LDAP, "ldap", "ldap/", "ldp", 0, 0, FileCheck::eSize, 2'000, false, true},
    {Type::FILETYPE_TONE, "tone", "tones/", "", 0, 0, FileCheck::eUnchecked, 0, false, true},
    {Type::FILETYPE_RESERVED_8, "", "", "", 0, 0, FileCheck::eUnchecked, 0, false, false},
    {Type::FILETYPE_SCREENSAVER, "screensaver", "screensavers/", "scr", 0, 0, FileCheck::eSize, 300'000, true, true},
    {Type::FILETYPE_RESERVED_10, "", "", "", 0, 0, FileCheck::eUnchecked, 0, false, false},
    {Type::FILETYPE_RINGER, "ringer", "ringtones/", "rng", 0, 0, FileCheck::eRinger, 1'000'000, true, true},
    {Type::FILETYPE_HELP, "help", "help/", "", 0, 0, FileCheck::eUnchecked, 0, false, true},
    {Type::FILETYPE_JAR, "jar", "jar/", "jar", 0, 0, FileCheck::eUnchecked, 0, false, true},
    {Type::FILETYPE_JAD, "jad", "jad/", "jad", 0, 0, FileCheck::eUnchecked, 0, false, true},
    {Type::FILETYPE_PHD, "phd", "phd/", "phd", 0, 0, FileCheck::eUnchecked, 0, false, true},
    {Type::FILETYPE_VR_AUDIO, "vraudio", "voice_recog_playbacks/", "vra", 0, 0, FileCheck::eUnchecked, 0, false, true},
    {Type::FILETYPE_VR_PATTERN, "vrpat", "voice_recog_patterns/", "vrp", 0, 0, FileCheck::eUnchecked, 0, false, true},
};
// clang-format on

constexpr const char* kVisitor = "visitor/";
constexpr const char* kDefaults = "defaults/";

// Deliberate: a visitor of the proprietary call control has fewer files of its own.
constexpr Type::eFiletype kVisitorTypes[] = {Type::FILETYPE_PICTURE,     Type::FILETYPE_LDAP,
                                             Type::FILETYPE_SCREENSAVER, Type::FILETYPE_RINGER,
                                             Type::FILETYPE_JAD,         Type::FILETYPE_PHD};
constexpr Type::eFiletype kVisitorKspTypes[] = {Type::FILETYPE_PICTURE, Type::FILETYPE_SCREENSAVER,
                                                Type::FILETYPE_RINGER};

template <class Types>
bool contains(const Types& types, Type::eFiletype type) {
    return std::find(std::begin(types), std::end(types), type) != std::end(types);
}

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

bool FileTypeCatalogue::isSingleFileType(LocalMgmtIfc::eFiletype type) {
    return type == Type::FILETYPE_MUSIC_ON_HOLD || type == Type::FILETYPE_LOGO ||
           type == Type::FILETYPE_LDAP;
}

void FileTypeCatalogue::appendUserDirectory(std::string& path, LocalMgmtIfc::eUsertype user,
                                            LocalMgmtIfc::eFiletype type) {
    switch (user) {
        case User::USER_UNSET:
        case User::USER_BASE:
        case User::USER_BASE_KSP:
            return;
        case User::USER_VISITOR:
            path += contains(kVisitorTypes, type) ? kVisitor : "";
            return;
        case User::USER_VISITOR_KSP:
            path += contains(kVisitorKspTypes, type) ? kVisitor : "";
            return;
        default:
            // Deliberate: the last user type is not among those told apart, and counts as unknown.
            path += kDefaults;
            return;
    }
}

bool FileTypeCatalogue::appendDirectory(std::string& path, LocalMgmtIfc::eUsertype user,
                                        LocalMgmtIfc::eFiletype type) {
    appendUserDirectory(path, user, type);
    const FileTypeRow& found = row(type);
    if (!found.isSupported) {
        VCMS_LOG(kLogError, "File type %d unsupported", static_cast<int>(type));
        return false;
    }
    path += found.directory;
    return true;
}

bool FileTypeCatalogue::getDownloadVcmsTags(LocalMgmtIfc::eFiletype type, DownloadTags& tags) {
    VCMS_LOG(kLogDebug, "getDownloadVcmsTags. start. ");
    const FileTypeRow& found = row(type);
    if (!found.isSupported) {
        VCMS_LOG(kLogError, "getDownloadVcmsTags: invalid filetype %d", static_cast<int>(type));
    } else if (!found.infix.empty()) {
        const std::string stem = "dl-" + std::string(found.infix);
        tags = {.useDefaults = stem + "-use-defaults",
                .method = stem + "-method",
                .address = stem + "-addr",
                .port = stem + "-port",
                .account = stem + "-account",
                .userName = stem + "-username",
                .password = stem + "-password",
                .path = stem + "-path",
                .baseUrl = stem + "-base-url",
                .file = stem + "-file"};
    }
    VCMS_LOG(kLogDebug, "getDownloadVcmsTags. end. rc = %d ", found.isSupported ? 1 : 0);
    return found.isSupported;
}

}  // namespace vireo
