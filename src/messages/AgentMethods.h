#pragma once

namespace vireo {

struct MethodCall;

void handleRegisterManagementIdentity(MethodCall& call);
void handleRegisterManagementIdentityBulkData(MethodCall& call);
void handleObserveData(MethodCall& call);
void handleObserveDataBulkData(MethodCall& call);
void handleObserveListDataBulkData(MethodCall& call);
void handleStopObservingData(MethodCall& call);
void handleManageableDataChanged(MethodCall& call);

}  // namespace vireo
