#include "messages/FilePathMethods.h"

#include <cstdlib>
#include <string>

#include "LocalMgmtIfc.h"
#include "messages/MethodTable.h"
#include "messages/TextEnumerations.h"
#include "service/ClientUtils.h"
#include "service/ProtocolAdapter.h"

namespace vireo {
namespace {

constexpr const char* kFileName = "filename";

/// A file that a request names; each protocol has a way of its own.
struct FileSelection {
    explicit FileSelection(const MethodCall& call) {
        if (call.protocol == VireoProtocols::SERVICE_XML) {
            const std::string& xml = call.request.getXMLParameter("FileSelection", Parameter::eIn);
            // Deliberate: a type that is no number counts as 0.
            type = std::atoi(ClientUtils::extractValueFromXMLString(xml, "type").c_str());
            name = ClientUtils::extractValueFromXMLString(xml, "name");
        } else {
            type = call.request.getIntParameter("fileType", Parameter::eIn);
            name = call.request.getStringParameter(kFileName, Parameter::eIn);
        }
    }

    LocalMgmtIfc::eFiletype fileType() const { return static_cast<LocalMgmtIfc::eFiletype>(type); }

    int type = 0;
    std::string name;
};

void acknowledge(MethodCall& call, bool result) {
    if (call.protocol == VireoProtocols::SERVICE_XML) {
        call.reply.addStringParameter("Acknowledge", Parameter::eOut,
                                      result ? "SUCCESS" : "ERROR_General");
    } else {
        call.reply.addBoolParameter("result", Parameter::eOut, result);
    }
}

void replyPath(MethodCall& call, bool result, std::string path) {
    call.reply.addBoolParameter("result", Parameter::eOut, result);
    call.reply.addStringParameter(kFileName, Parameter::eOut, std::move(path));
}

LocalMgmtIfc::eFiletype typeOf(const Method& request) {
    return convertXMLStringToFileTypeEnum(request.getStringParameter("filetype", Parameter::eIn));
}

}  // namespace

void handleGetFilePathFromType(MethodCall& call) {
    std::string path = call.request.getStringParameter(kFileName, Parameter::eInOut);
    const bool result = call.service.getFilePathFromType(typeOf(call.request), path);
    replyPath(call, result, std::move(path));
}

void handleGetFilePathFromTypeAndUser(MethodCall& call) {
    std::string path = call.request.getStringParameter(kFileName, Parameter::eInOut);
    const LocalMgmtIfc::eFiletype type = typeOf(call.request);
    const auto user = static_cast<LocalMgmtIfc::eUsertype>(
        call.request.getIntParameter("userType", Parameter::eIn));
    const bool result = call.service.getFilePathFromType(type, path, user);
    replyPath(call, result, std::move(path));
}

void handleValidateFile(MethodCall& call) {
    const FileSelection file(call);
    acknowledge(call, call.service.validateFile(file.fileType(), file.name));
}

void handleDeleteFile(MethodCall& call) {
    const FileSelection file(call);
    acknowledge(call, call.service.deleteFile(file.fileType(), file.name));
}

}  // namespace vireo
