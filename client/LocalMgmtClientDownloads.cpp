// The calls of LocalMgmtClient that are about files from servers.
#include <string>

#include "ClientSession.h"
#include "LocalMgmtClient.h"
#include "MethodCalls.h"

namespace vireo {
namespace {

Method typeRequest(const char* methodName, LocalMgmtIfc::eFiletype type) {
    Method request(methodName, Method::eRequest);
    request.addIntParameter("filetype", Parameter::eIn, type);
    return request;
}

Method sourceRequest(const char* methodName, const LocalMgmtClient::DownloadSource& source,
                     LocalMgmtIfc::eFiletype type) {
    Method request(methodName, Method::eRequest);
    request.addIntParameter("downloadProtocol", Parameter::eIn, source.protocol);
    request.addStringParameter("port", Parameter::eIn, source.port);
    request.addStringParameter("server", Parameter::eIn, source.server);
    request.addStringParameter("username", Parameter::eIn, source.userName);
    request.addStringParameter("password", Parameter::eIn, source.password);
    request.addIntParameter("filetype", Parameter::eIn, type);
    request.addStringParameter("sourcepath", Parameter::eIn, source.sourcePath);
    request.addStringParameter("filename", Parameter::eIn, source.fileName);
    return request;
}

}  // namespace

// The replies of the methods that start a download bear a name of their own.
CallStatus LocalMgmtClient::start(const Method& request, bool& started) {
    Method reply;
    if (const CallStatus status = m_calls->callNamed(request, request.name() + "Response", reply);
        status != CallStatus::eDone) {
        return status;
    }
    return MethodCalls::takeFrom([&] {
        started = reply.getBoolParameter("result", Parameter::eOut);
        return true;
    });
}

CallStatus LocalMgmtClient::startDownload(LocalMgmtIfc::eFiletype type, bool& started) {
    return start(typeRequest("startDownloadWithFileType", type), started);
}

CallStatus LocalMgmtClient::startDownloadWithCallback(LocalMgmtIfc::eFiletype type, bool& started) {
    if (!m_session->hasCallback()) {
        return CallStatus::eNoCallback;
    }
    return start(typeRequest("startDownloadWithFileTypeAndCallback", type), started);
}

CallStatus LocalMgmtClient::startDownloadFrom(const DownloadSource& source,
                                              LocalMgmtIfc::eFiletype type, bool overrideBusy,
                                              bool& started) {
    if (!m_session->hasCallback()) {
        return CallStatus::eNoCallback;
    }
    Method request = sourceRequest("startDownloadWithManyParamsAndCallback", source, type);
    request.addBoolParameter("overrideBusy", Parameter::eIn, overrideBusy);
    return start(request, started);
}

CallStatus LocalMgmtClient::fetchFrom(const DownloadSource& source, LocalMgmtIfc::eFiletype type,
                                      bool& fetched) {
    return start(sourceRequest("startDownloadWithManyParams", source, type), fetched);
}

CallStatus LocalMgmtClient::requestCurrentDownloadStatus(LocalMgmtIfc::eFiletype type,
                                                         const std::string& fileName,
                                                         int& percent) {
    Method request = typeRequest("requestCurrentDownloadStatus", type);
    request.addStringParameter("filename", Parameter::eIn, fileName);
    return m_calls->askNumber(request, "result", percent);
}

CallStatus LocalMgmtClient::getFilePathFromType(const std::string& fileType, std::string& path,
                                                bool& known) {
    Method request("getFilePathFromType", Method::eRequest);
    request.addStringParameter("filename", Parameter::eInOut, path);
    request.addStringParameter("filetype", Parameter::eIn, fileType);
    Method reply;
    if (const CallStatus status = m_calls->callNamed(request, reply); status != CallStatus::eDone) {
        return status;
    }
    return MethodCalls::takeFrom([&] {
        const bool result = reply.getBoolParameter("result", Parameter::eOut);
        path = reply.getStringParameter("filename", Parameter::eOut);
        known = result;
        return true;
    });
}

CallStatus LocalMgmtClient::validateFile(LocalMgmtIfc::eFiletype type, const std::string& fileName,
                                         bool& accepted) {
    return askAboutFile("validateFile", type, fileName, accepted);
}

CallStatus LocalMgmtClient::refreshPictureClips() {
    Method reply;
    return m_calls->callNamed(Method("refreshPictureClips", Method::eRequest), reply);
}

}  // namespace vireo
