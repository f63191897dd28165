#include "messages/MethodTable.h"

#include "messages/AgentMethods.h"
#include "messages/BusyMethods.h"
#include "messages/DownloadMethods.h"
#include "messages/FileListMethods.h"
#include "messages/FilePathMethods.h"
#include "messages/FileTypeMethods.h"
#include "messages/ItemMethods.h"
#include "messages/MaintenanceMethods.h"
#include "messages/MethodNames.h"
#include "messages/SchemaMethods.h"
#include "messages/TrapMethods.h"
#include "messages/UserAreaMethods.h"

namespace vireo {
namespace {

constexpr MethodRow kMethods[] = {
    {methodNames::kStartDownloadWithFileType, handleStartDownloadWithFileType},
    {methodNames::kStartDownloadWithFileTypeAndCallback,
     handleStartDownloadWithFileTypeAndCallback},
    {methodNames::kStartDownloadWithManyParams, handleStartDownloadWithManyParams},
    {methodNames::kStartDownloadWithManyParamsAndCallback,
     handleStartDownloadWithManyParamsAndCallback},
    {methodNames::kRequestCurrentDownloadStatus, handleRequestCurrentDownloadStatus},
    {methodNames::kGetListOfFilesOfType, handleGetListOfFilesOfType},
    {methodNames::kGetListOfFilesOfTypeAndUser, handleGetListOfFilesOfTypeAndUser},
    {methodNames::kGetFileTypeMetadata, handleGetFileTypeMetadata},
    {methodNames::kGetFileTypeCountLimit, handleGetFileTypeCountLimit},
    {methodNames::kGetFileTypeNameLimit, handleGetFileTypeNameLimit},
    {methodNames::kSetPhoneBusyStatus, handleSetPhoneBusyStatus},
    {methodNames::kRetrievePhoneBusyStatus, handleRetrievePhoneBusyStatus},
    {methodNames::kClearPhoneBusyStatus, handleClearPhoneBusyStatus},
    {methodNames::kPerformFactoryReset, handlePerformFactoryReset},
    {methodNames::kPerformReboot, handlePerformReboot},
    {methodNames::kRegisterManagementIdentity, handleRegisterManagementIdentity},
    {methodNames::kRegisterManagementIdentityBulkData, handleRegisterManagementIdentityBulkData},
    {methodNames::kObserveData, handleObserveData},
    {methodNames::kObserveDataBulkData, handleObserveDataBulkData},
    {methodNames::kObserveListDataBulkData, handleObserveListDataBulkData},
    {methodNames::kStopObservingData, handleStopObservingData},
    {methodNames::kSetData, handleSetData, true},
    {methodNames::kGetData, handleGetData, true},
    {methodNames::kFindSchemaName, handleFindSchemaName},
    {methodNames::kExportSchema, handleExportSchema},
    {methodNames::kGetSchema, handleGetSchema},
    {methodNames::kManageableDataChanged, handleManageableDataChanged},
    {methodNames::kRaiseGenericTrap, handleRaiseGenericTrap},
    {methodNames::kRaiseSpecificTrap, handleRaiseSpecificTrap},
    {methodNames::kGetFilePathFromType, handleGetFilePathFromType},
    {methodNames::kGetFilePathFromTypeAndUser, handleGetFilePathFromTypeAndUser},
    {methodNames::kGetIDAndDisplayName, handleGetIDAndDisplayName},
    {methodNames::kChangeCurrentUser, handleChangeCurrentUser},
    {methodNames::kClearMobileUserData, handleClearMobileUserData},
    {methodNames::kInvalidateVCMSCache, handleInvalidateVCMSCache},
    {methodNames::kRefreshPictureClips, handleRefreshPictureClips},
    {methodNames::kGetUserDataSpaceInfo, handleGetUserDataSpaceInfo},
    {methodNames::kClearAllUserData, handleClearAllUserData},
    {methodNames::kValidateFile, handleValidateFile},
    {methodNames::kDeleteFile, handleDeleteFile},
    {methodNames::kCleanupUserData, handleCleanupUserData},
};

}  // namespace

const MethodRow* findMethod(std::string_view name) {
    for (const MethodRow& row : kMethods) {
        if (name == row.name) {
            return &row;
        }
    }
    return nullptr;
}

}  // namespace vireo
