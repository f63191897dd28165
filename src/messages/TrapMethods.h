#pragma once

namespace vireo {

struct MethodCall;

void handleRaiseGenericTrap(MethodCall& call);
void handleRaiseSpecificTrap(MethodCall& call);

}  // namespace vireo
