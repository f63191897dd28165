#include "messages/SchemaMethods.h"

#include "LocalMgmtIfc.h"
#include "data/ManageableData.h"
#include "messages/MethodTable.h"

namespace vireo {

void handleFindSchemaName(MethodCall& call) {
    const std::string& tag = call.request.getStringParameter("nodeId", Parameter::eIn);
    call.reply.addStringParameter("schemaName", Parameter::eOut, call.service.findSchemaName(tag));
}

void handleExportSchema(MethodCall& call) {
    const std::string& name = call.request.getStringParameter("schemaName", Parameter::eIn);
    call.reply.addStringParameter("schemaXml", Parameter::eOut, call.service.exportSchema(name));
}

void handleGetSchema(MethodCall& call) {
    ManageableData record;
    const std::string& name = call.request.getStringParameter("schemaName", Parameter::eIn);
    const bool result = call.service.getSchema(name, record);
    call.reply.addBoolParameter("result", Parameter::eOut, result);
    call.reply.addStringParameter("manageableData", Parameter::eOut, record.serialize());
}

}  // namespace vireo
