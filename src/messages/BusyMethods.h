#pragma once

namespace vireo {

struct MethodCall;

void handleSetPhoneBusyStatus(MethodCall& call);
void handleRetrievePhoneBusyStatus(MethodCall& call);
void handleClearPhoneBusyStatus(MethodCall& call);

}  // namespace vireo
