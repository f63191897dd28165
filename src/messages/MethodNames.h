#pragma once

namespace vireo::methodNames {

// The methods of the local management interface, as messages name them.
inline constexpr const char* kStartDownloadWithFileType = "startDownloadWithFileType";
inline constexpr const char* kStartDownloadWithFileTypeAndCallback =
    "startDownloadWithFileTypeAndCallback";
inline constexpr const char* kStartDownloadWithManyParams = "startDownloadWithManyParams";
inline constexpr const char* kStartDownloadWithManyParamsAndCallback =
    "startDownloadWithManyParamsAndCallback";
inline constexpr const char* kRequestCurrentDownloadStatus = "requestCurrentDownloadStatus";
inline constexpr const char* kGetListOfFilesOfType = "getListOfFilesOfType";
inline constexpr const char* kGetListOfFilesOfTypeAndUser = "getListOfFilesOfTypeAndUser";
inline constexpr const char* kGetFileTypeMetadata = "getFileTypeMetadata";
inline constexpr const char* kGetFileTypeCountLimit = "getFileTypeCountLimit";
inline constexpr const char* kGetFileTypeNameLimit = "getFileTypeNameLimit";
inline constexpr const char* kSetPhoneBusyStatus = "setPhoneBusyStatus";
inline constexpr const char* kRetrievePhoneBusyStatus = "retrievePhoneBusyStatus";
inline constexpr const char* kClearPhoneBusyStatus = "clearPhoneBusyStatus";
inline constexpr const char* kPerformFactoryReset = "performFactoryReset";
inline constexpr const char* kPerformReboot = "performReboot";
inline constexpr const char* kRegisterManagementIdentity = "registerManagementIdentity";
inline constexpr const char* kRegisterManagementIdentityBulkData =
    "registerManagementIdentityBulkData";
inline constexpr const char* kObserveData = "observeData";
inline constexpr const char* kObserveDataBulkData = "observeDataBulkData";
inline constexpr const char* kObserveListDataBulkData = "observeListDataBulkData";
inline constexpr const char* kStopObservingData = "stopObservingData";
inline constexpr const char* kManageableDataChanged = "manageableDataChanged";
inline constexpr const char* kSetData = "setData";
inline constexpr const char* kGetData = "getData";
inline constexpr const char* kFindSchemaName = "findSchemaName";
inline constexpr const char* kExportSchema = "exportSchema";
inline constexpr const char* kGetSchema = "getSchema";
inline constexpr const char* kRaiseGenericTrap = "raiseGenericTrap";
inline constexpr const char* kRaiseSpecificTrap = "raiseSpecificTrap";
inline constexpr const char* kGetFilePathFromType = "getFilePathFromType";
inline constexpr const char* kGetFilePathFromTypeAndUser = "getFilePathFromTypeAndUser";
inline constexpr const char* kGetIDAndDisplayName = "getIDAndDisplayName";
inline constexpr const char* kChangeCurrentUser = "changeCurrentUser";
inline constexpr const char* kClearMobileUserData = "clearMobileUserData";
inline constexpr const char* kInvalidateVCMSCache = "invalidateVCMSCache";
inline constexpr const char* kRefreshPictureClips = "refreshPictureClips";
inline constexpr const char* kGetUserDataSpaceInfo = "getUserDataSpaceInfo";
inline constexpr const char* kClearAllUserData = "clearAllUserData";
inline constexpr const char* kValidateFile = "validateFile";
inline constexpr const char* kDeleteFile = "deleteFile";
inline constexpr const char* kCleanupUserData = "cleanupUserData";

}  // namespace vireo::methodNames
