#pragma once

namespace vireo {

struct MethodCall;

void handleGetListOfFilesOfType(MethodCall& call);
void handleGetListOfFilesOfTypeAndUser(MethodCall& call);

}  // namespace vireo
