#pragma once

namespace vireo {

struct MethodCall;

void handleGetFileTypeMetadata(MethodCall& call);
void handleGetFileTypeCountLimit(MethodCall& call);
void handleGetFileTypeNameLimit(MethodCall& call);

}  // namespace vireo
