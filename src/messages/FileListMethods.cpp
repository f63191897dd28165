#include "messages/FileListMethods.h"

#include <list>
#include <string>

#include "LocalMgmtIfc.h"
#include "LogMacros.h"
#include "data/XmlText.h"
#include "messages/MethodNames.h"
#include "messages/MethodTable.h"
#include "messages/TextEnumerations.h"
#include "service/ProtocolAdapter.h"
#include "service/Serializer.h"

namespace vireo {
namespace {

constexpr const char* kFileNames = "FileNames";

LocalMgmtIfc::eFiletype typeOf(const Method& request) {
    return convertXMLStringToFileTypeEnum(request.getStringParameter("FileType", Parameter::eIn));
}

/// The list that a request brings along to be filled.
std::list<std::string> listOf(const MethodCall& call) {
    std::list<std::string> files;
    if (call.protocol != VireoProtocols::SERVICE_XML) {
        std::string_view text = call.request.getStringParameter(kFileNames, Parameter::eInOut);
        if (!Serializer::deserialize(text, files) || !text.empty()) {
            throw MethodError("method \"" + call.request.name() +
                              "\": parameter \"FileNames\" is no list of strings");
        }
    }
    return files;
}

void appendFileInfo(std::string& xml, const std::string& path) {
    if (const auto found = XmlText::findUncarriable(path)) {
        VIREO_LOG("LocalMgmtInvoker", kLogWarning,
                  "a file is left out of the list, its name has %s", found->c_str());
        return;
    }
    const std::size_t slash = path.rfind('/');
    const bool hasDirectory = slash != std::string::npos;
    xml += "<fileinfo directory=\"";
    XmlText::appendEscapedAttribute(xml, hasDirectory ? path.substr(0, slash) : "");
    xml += "\" name=\"";
    XmlText::appendEscapedAttribute(xml, hasDirectory ? path.substr(slash + 1) : path);
    xml += "\" />";
}

void constructFileListResponse(MethodCall& call, const std::list<std::string>& files) {
    // Deliberate: both methods answer under this name.
    call.reply = Method(methodNames::kGetListOfFilesOfType, Method::eResponse);
    std::string text;
    if (call.protocol == VireoProtocols::SERVICE_XML) {
        for (const std::string& path : files) {
            appendFileInfo(text, path);
        }
        call.reply.addStringParameter("Acknowledge", Parameter::eOut, "SUCCESS");
        call.reply.addXMLParameter(kFileNames, Parameter::eOut, std::move(text));
        return;
    }
    Serializer::serialize(text, files);
    call.reply.addStringParameter(kFileNames, Parameter::eOut, std::move(text));
}

}  // namespace

void handleGetListOfFilesOfType(MethodCall& call) {
    const LocalMgmtIfc::eFiletype type = typeOf(call.request);
    std::list<std::string> files = listOf(call);
    call.service.getListOfFilesOfType(type, &files);
    constructFileListResponse(call, files);
}

void handleGetListOfFilesOfTypeAndUser(MethodCall& call) {
    const LocalMgmtIfc::eFiletype type = typeOf(call.request);
    std::list<std::string> files = listOf(call);
    const auto user = static_cast<LocalMgmtIfc::eUsertype>(
        call.request.getIntParameter("userType", Parameter::eIn));
    call.service.getListOfFilesOfType(type, &files, user);
    constructFileListResponse(call, files);
}

}  // namespace vireo
