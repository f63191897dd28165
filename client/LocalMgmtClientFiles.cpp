// The calls of LocalMgmtClient that are about files of users.
#include <string>
#include <utility>

#include "FileInfoList.h"
#include "LocalMgmtClient.h"
#include "MethodCalls.h"
#include "data/XmlText.h"
#include "service/Serializer.h"

namespace vireo {
namespace {

constexpr const char* kListMethod = "getListOfFilesOfType";
constexpr const char* kFileNames = "FileNames";

Method listRequest(const char* methodName, const std::string& fileType) {
    Method request(methodName, Method::eRequest);
    request.addStringParameter("FileType", Parameter::eIn, fileType);
    return request;
}

bool takeFiles(LocalMgmtClient::Protocol protocol, const Method& reply,
               std::list<std::string>& files) {
    if (protocol == LocalMgmtClient::Protocol::eXml) {
        return FileInfoList::parse(reply.getXMLParameter(kFileNames, Parameter::eOut), files);
    }
    std::string_view text = reply.getStringParameter(kFileNames, Parameter::eOut);
    std::list<std::string> taken;
    if (!Serializer::deserialize(text, taken) || !text.empty()) {
        return false;
    }
    files.swap(taken);
    return true;
}

}  // namespace

// The service wants the file, and gives its answer, in another form in each protocol.
CallStatus LocalMgmtClient::askAboutFile(const char* methodName, LocalMgmtIfc::eFiletype type,
                                         const std::string& fileName, bool& result) {
    Method request(methodName, Method::eRequest);
    if (m_calls->protocol() != Protocol::eXml) {
        request.addIntParameter("fileType", Parameter::eIn, type);
        request.addStringParameter("filename", Parameter::eIn, fileName);
        return m_calls->askBool(request, "result", result);
    }
    if (XmlText::findUncarriable(fileName)) {
        return CallStatus::eNotCarried;
    }
    std::string selection = "<type>" + std::to_string(type) + "</type><name>";
    XmlText::appendEscaped(selection, fileName);
    request.addXMLParameter("FileSelection", Parameter::eIn, selection + "</name>");
    std::string acknowledge;
    const CallStatus status = m_calls->askText(request, "Acknowledge", acknowledge);
    if (status == CallStatus::eDone) {
        result = acknowledge == "SUCCESS";
    }
    return status;
}

// Both methods answer under the name of the first, and the list travels in another form in each
// protocol.
CallStatus LocalMgmtClient::askForFiles(Method request, std::list<std::string>& files) {
    if (m_calls->protocol() != Protocol::eXml) {
        std::string none;
        Serializer::serialize(none, std::list<std::string>());
        request.addStringParameter(kFileNames, Parameter::eInOut, std::move(none));
    }
    Method reply;
    if (const CallStatus status = m_calls->callNamed(request, kListMethod, reply);
        status != CallStatus::eDone) {
        return status;
    }
    return MethodCalls::takeFrom([&] { return takeFiles(m_calls->protocol(), reply, files); });
}

CallStatus LocalMgmtClient::getListOfFilesOfType(const std::string& fileType,
                                                 std::list<std::string>& files) {
    return askForFiles(listRequest(kListMethod, fileType), files);
}

CallStatus LocalMgmtClient::getListOfFilesOfTypeAndUser(const std::string& fileType,
                                                        LocalMgmtIfc::eUsertype user,
                                                        std::list<std::string>& files) {
    Method request = listRequest("getListOfFilesOfTypeAndUser", fileType);
    request.addIntParameter("userType", Parameter::eIn, user);
    return askForFiles(std::move(request), files);
}

CallStatus LocalMgmtClient::deleteFile(LocalMgmtIfc::eFiletype type, const std::string& fileName,
                                       bool& deleted) {
    return askAboutFile("deleteFile", type, fileName, deleted);
}

CallStatus LocalMgmtClient::cleanupUserData(const std::string& fileType,
                                            LocalMgmtIfc::eUsertype user, bool& cleaned) {
    Method request("cleanupUserData", Method::eRequest);
    request.addStringParameter("filetype", Parameter::eIn, fileType);
    request.addIntParameter("userType", Parameter::eIn, user);
    return m_calls->askBool(request, "result", cleaned);
}

CallStatus LocalMgmtClient::changeCurrentUser(const std::string& userType, bool& changed) {
    Method request("changeCurrentUser", Method::eRequest);
    request.addStringParameter("userType", Parameter::eIn, userType);
    return m_calls->askBool(request, "result", changed);
}

CallStatus LocalMgmtClient::clearMobileUserData(bool& cleared) {
    return m_calls->askBool(Method("clearMobileUserData", Method::eRequest), "result", cleared);
}

CallStatus LocalMgmtClient::getIDAndDisplayName(std::string& id, std::string& displayName) {
    Method request("getIDAndDisplayName", Method::eRequest);
    request.addStringParameter("identifier", Parameter::eInOut, id);
    request.addStringParameter("displayname", Parameter::eInOut, displayName);
    Method reply;
    if (const CallStatus status = m_calls->callNamed(request, reply); status != CallStatus::eDone) {
        return status;
    }
    return MethodCalls::takeFrom([&] {
        std::string taken = reply.getStringParameter("identifier", Parameter::eOut);
        displayName = reply.getStringParameter("displayname", Parameter::eOut);
        id = std::move(taken);
        return true;
    });
}

CallStatus LocalMgmtClient::getUserDataSpaceInfo(MemoryInfo& info) {
    std::string text;
    const CallStatus status =
        m_calls->askText(Method("getUserDataSpaceInfo", Method::eRequest), "spaceinfo", text);
    if (status != CallStatus::eDone) {
        return status;
    }
    return info.deserialize(text) ? CallStatus::eDone : CallStatus::eMalformedReply;
}

}  // namespace vireo
