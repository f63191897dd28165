#pragma once

namespace vireo {

struct MethodCall;

void handleSetData(MethodCall& call);
void handleGetData(MethodCall& call);
void handleInvalidateVCMSCache(MethodCall& call);

}  // namespace vireo
