#pragma once

namespace vireo::methodNames {

// The methods of the local management interface, as messages name them.
inline constexpr const char* kSetData = "setData";
inline constexpr const char* kGetData = "getData";
inline constexpr const char* kFindSchemaName = "findSchemaName";
inline constexpr const char* kExportSchema = "exportSchema";
inline constexpr const char* kGetSchema = "getSchema";
inline constexpr const char* kInvalidateVCMSCache = "invalidateVCMSCache";

}  // namespace vireo::methodNames
