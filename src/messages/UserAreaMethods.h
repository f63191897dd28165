#pragma once

namespace vireo {

struct MethodCall;

void handleGetIDAndDisplayName(MethodCall& call);
void handleChangeCurrentUser(MethodCall& call);
void handleClearMobileUserData(MethodCall& call);
void handleCleanupUserData(MethodCall& call);
void handleGetUserDataSpaceInfo(MethodCall& call);

}  // namespace vireo
