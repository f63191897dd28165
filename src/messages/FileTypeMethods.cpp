#include "messages/FileTypeMethods.h"

#include <string>

#include "LocalMgmtIfc.h"
#include "LogMacros.h"
#include "messages/MethodNames.h"
#include "messages/MethodTable.h"
#include "messages/TextEnumerations.h"
#include "service/ProtocolAdapter.h"
#include "service/Serializer.h"

namespace vireo {
namespace {

LocalMgmtIfc::eFiletype typeOf(const Method& request) {
    return convertXMLStringToFileTypeEnum(request.getStringParameter("FileType", Parameter::eIn));
}

void constructFileTypeMetadataResponse(MethodCall& call, int maxEntries, int maxNameChars) {
    VIREO_LOG("LocalMgmtInvoker", kLogDebug, "LocalMgmtInvoker::constructFileTypeMetadataResponse");
    constexpr const char* kLimits = "FileTypeMetadata";
    std::string text;
    if (call.protocol == VireoProtocols::SERVICE_XML) {
        text = "<maxFileTypeEntries>" + std::to_string(maxEntries) +
               "</maxFileTypeEntries><maxFileTypeNameChars>" + std::to_string(maxNameChars) +
               "</maxFileTypeNameChars>";
        call.reply.addStringParameter("Acknowledge", Parameter::eOut, "SUCCESS");
        call.reply.addXMLParameter(kLimits, Parameter::eOut, std::move(text));
        return;
    }
    Serializer::serialize(text, maxEntries);
    Serializer::serialize(text, maxNameChars);
    call.reply.addStringParameter(kLimits, Parameter::eOut, std::move(text));
}

}  // namespace

void handleGetFileTypeMetadata(MethodCall& call) {
    const LocalMgmtIfc::eFiletype type = typeOf(call.request);
    const int maxEntries = call.service.getFileTypeCountLimit(type);
    constructFileTypeMetadataResponse(call, maxEntries, call.service.getFileTypeNameLimit(type));
}

void handleGetFileTypeCountLimit(MethodCall& call) {
    const int limit = call.service.getFileTypeCountLimit(typeOf(call.request));
    call.reply.addIntParameter(methodNames::kGetFileTypeCountLimit, Parameter::eOut, limit);
}

void handleGetFileTypeNameLimit(MethodCall& call) {
    const int limit = call.service.getFileTypeNameLimit(typeOf(call.request));
    call.reply.addIntParameter(methodNames::kGetFileTypeNameLimit, Parameter::eOut, limit);
}

}  // namespace vireo
