#pragma once

namespace vireo {

struct MethodCall;

void handleFindSchemaName(MethodCall& call);
void handleExportSchema(MethodCall& call);
void handleGetSchema(MethodCall& call);

}  // namespace vireo
