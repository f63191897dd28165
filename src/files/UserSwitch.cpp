#include "files/UserSwitch.h"

#include "LogMacros.h"
#include "files/AreaCleanup.h"
#include "files/FileMigration.h"

namespace vireo {
namespace {

using Ifc = LocalMgmtIfc;

void logVisitorCleared() {
    VCMS_LOG(kLogDebug, "Clearing visitor file area after a reset");
}

}  // namespace

bool UserSwitch::changeCurrentUser(Ifc::eUsertype user) {
    VCMS_LOG(kLogDebug, "changeCurrentUser for file access to %d", static_cast<int>(user));
    switch (user) {
        case Ifc::USER_BASE:
            becomeBase();
            break;
        case Ifc::USER_VISITOR:
            becomeVisitor();
            break;
        case Ifc::USER_MIGRATE_TO_VISITOR:
            if (m_current == Ifc::USER_BASE) {
                m_migration.migrateFileSpace(Ifc::USER_BASE, Ifc::USER_VISITOR);
            }
            m_current = Ifc::USER_VISITOR;
            break;
        case Ifc::USER_CLEAR_DATA_VISITOR:
            clearVisitor();
            break;
        case Ifc::USER_BASE_KSP:
        case Ifc::USER_VISITOR_KSP:
            m_current = user;
            break;
        case Ifc::USER_CLEAR_DATA_VISITOR_KSP:
            clearVisitorKsp();
            break;
        default:
            // Deliberate: neither the default set nor the unset value becomes the current user.
            break;
    }
    return true;
}

void UserSwitch::becomeBase() {
    if (m_current == Ifc::USER_VISITOR) {
        m_cleanup.resetUserFiles(Ifc::USER_VISITOR, true, false);
        m_cleanup.emptyDeletedFolder(Ifc::USER_VISITOR);
    }
    m_current = Ifc::USER_BASE;  // last: what is cleared before is the visitor's
}

void UserSwitch::becomeVisitor() {
    if (m_current == Ifc::USER_BASE) {
        m_cleanup.resetUserFiles(Ifc::USER_VISITOR, false, false);
        m_cleanup.emptyDeletedFolder(Ifc::USER_VISITOR);
        m_cleanup.cleanupUserData(Ifc::FILETYPE_RINGER, Ifc::USER_VISITOR, false, true);
        m_cleanup.cleanupUserData(Ifc::FILETYPE_SCREENSAVER, Ifc::USER_VISITOR, false, true);
    }
    m_current = Ifc::USER_VISITOR;
}

void UserSwitch::clearVisitor() {
    logVisitorCleared();
    m_current = Ifc::USER_VISITOR;
    m_cleanup.resetUserFiles(Ifc::USER_VISITOR, true, false);
    m_cleanup.emptyDeletedFolder(Ifc::USER_VISITOR);
}

void UserSwitch::clearVisitorKsp() {
    logVisitorCleared();
    m_cleanup.resetUserFiles(Ifc::USER_VISITOR_KSP, false, false);
    m_cleanup.emptyDeletedFolder(Ifc::USER_VISITOR_KSP);
    m_current = Ifc::USER_VISITOR_KSP;
}

bool UserSwitch::clearMobileUserData() {
    VCMS_LOG(kLogDebug, "clearMobileUserData() - Called");
    m_cleanup.emptyDeletedFolder(Ifc::USER_VISITOR_KSP);
    m_cleanup.resetUserFiles(Ifc::USER_VISITOR_KSP, false, false);
    return true;
}

}  // namespace vireo
