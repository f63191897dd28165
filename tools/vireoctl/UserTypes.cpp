#include "UserTypes.h"

namespace vireo {
namespace {

constexpr struct {
    const char* name;
    LocalMgmtIfc::eUsertype user;
} kUsers[] = {
    // Any name but the others means the phone's own user.
    {"baseUser", LocalMgmtIfc::USER_BASE},
    {"visitorUser", LocalMgmtIfc::USER_VISITOR},
    {"migrateToVisitorUser", LocalMgmtIfc::USER_MIGRATE_TO_VISITOR},
    {"defaultUser", LocalMgmtIfc::USER_DEFAULT},
    {"clearDataVisitorUser", LocalMgmtIfc::USER_CLEAR_DATA_VISITOR},
    {"baseUserKsp", LocalMgmtIfc::USER_BASE_KSP},
    {"visitorUserKsp", LocalMgmtIfc::USER_VISITOR_KSP},
    {"ClearDataVisitorUserKsp", LocalMgmtIfc::USER_CLEAR_DATA_VISITOR_KSP},
};

}  // namespace

const std::vector<std::string>& UserTypes::names() {
    static const std::vector<std::string> all = [] {
        std::vector<std::string> names;
        for (const auto& each : kUsers) {
            names.emplace_back(each.name);
        }
        return names;
    }();
    return all;
}

LocalMgmtIfc::eUsertype UserTypes::find(std::string_view name) {
    for (const auto& each : kUsers) {
        if (name == each.name) {
            return each.user;
        }
    }
    return LocalMgmtIfc::USER_BASE;
}

}  // namespace vireo
