#pragma once

namespace vireo {

struct MethodCall;

void handleGetFilePathFromType(MethodCall& call);
void handleGetFilePathFromTypeAndUser(MethodCall& call);
void handleValidateFile(MethodCall& call);
void handleDeleteFile(MethodCall& call);

}  // namespace vireo
