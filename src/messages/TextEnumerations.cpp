#include "messages/TextEnumerations.h"

#include <string_view>

#include "LogMacros.h"
#include "files/FileTypeCatalogue.h"

namespace vireo {
namespace {

struct UserTypeName {
    std::string_view text;
    LocalMgmtIfc::eUsertype user;
};

constexpr UserTypeName kUserTypes[] = {
    {"visitorUser", LocalMgmtIfc::USER_VISITOR},
    {"defaultUser", LocalMgmtIfc::USER_DEFAULT},
    {"migrateToVisitorUser", LocalMgmtIfc::USER_MIGRATE_TO_VISITOR},
    {"clearDataVisitorUser", LocalMgmtIfc::USER_CLEAR_DATA_VISITOR},
    {"baseUserKsp", LocalMgmtIfc::USER_BASE_KSP},
    {"visitorUserKsp", LocalMgmtIfc::USER_VISITOR_KSP},
    // Deliberate: the capital, unlike the name above.
    {"ClearDataVisitorUserKsp", LocalMgmtIfc::USER_CLEAR_DATA_VISITOR_KSP},
};

}  // namespace

LocalMgmtIfc::eFiletype convertXMLStringToFileTypeEnum(const std::string& name) {
    VIREO_LOG("LocalMgmtInvoker", kLogDebug, "LocalMgmtInvoker::convertXMLStringToFileTypeEnum");
    const FileTypeRow* row = FileTypeCatalogue::findByXmlName(name);
    // Deliberate: an unknown name is no error.
    return row != nullptr ? row->type : LocalMgmtIfc::FILETYPE_SOFTWARE;
}

LocalMgmtIfc::eUsertype convertStringToUserTypeEnum(const std::string& name) {
    VIREO_LOG("LocalMgmtInvoker", kLogDebug, "LocalMgmtInvoker::convertStringToUserTypeEnum");
    for (const auto& [text, user] : kUserTypes) {
        if (name == text) {
            return user;
        }
    }
    // Deliberate: an unknown name is no error.
    return LocalMgmtIfc::USER_BASE;
}

}  // namespace vireo
