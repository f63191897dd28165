#pragma once

namespace vireo {

struct MethodCall;

void handlePerformFactoryReset(MethodCall& call);
void handlePerformReboot(MethodCall& call);
void handleClearAllUserData(MethodCall& call);

}  // namespace vireo
