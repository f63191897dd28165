#include "messages/DownloadMethods.h"

#include <string>

#include "LocalMgmtIfc.h"
#include "LogMacros.h"
#include "messages/MethodTable.h"
#include "service/Invoker.h"

namespace vireo {
namespace {

constexpr const char* kResult = "result";

/// The settings that come with a request.
struct ManyParams {
    explicit ManyParams(const Method& request)
        : protocol(static_cast<LocalMgmtIfc::eDownloadProtocol>(
              request.getIntParameter("downloadProtocol", Parameter::eIn))),
          port(request.getStringParameter("port", Parameter::eIn)),
          server(request.getStringParameter("server", Parameter::eIn)),
          userName(request.getStringParameter("username", Parameter::eIn)),
          password(request.getStringParameter("password", Parameter::eIn)),
          type(static_cast<LocalMgmtIfc::eFiletype>(
              request.getIntParameter("filetype", Parameter::eIn))),
          sourcePath(request.getStringParameter("sourcepath", Parameter::eIn)),
          fileName(request.getStringParameter("filename", Parameter::eIn)) {}

    // The password is nobody's business.
    void log(const char* method) const {
        VIREO_LOG("LocalMgmtInvoker", kLogDebug,
                  "handleMessage %s: (%d, %s, %s, %s, ***, %d, %s, %s)", method,
                  static_cast<int>(protocol), port.c_str(), server.c_str(), userName.c_str(),
                  static_cast<int>(type), sourcePath.c_str(), fileName.c_str());
    }

    const LocalMgmtIfc::eDownloadProtocol protocol;
    const std::string& port;
    const std::string& server;
    const std::string& userName;
    const std::string& password;
    const LocalMgmtIfc::eFiletype type;
    const std::string& sourcePath;
    const std::string& fileName;
};

LocalMgmtIfc::eFiletype typeOf(const Method& request) {
    return static_cast<LocalMgmtIfc::eFiletype>(
        request.getIntParameter("filetype", Parameter::eIn));
}

/// The replies of the starting methods bear another name than the requests.
void reply(MethodCall& call, bool result) {
    call.reply = Method(call.request.name() + "Response", Method::eResponse);
    call.reply.addBoolParameter(kResult, Parameter::eOut, result);
}

Executable* sender(MethodCall& call) {
    return call.framework.findPeerProxy("LocalMgmtCallbackIfc");
}

}  // namespace

void handleStartDownloadWithFileType(MethodCall& call) {
    reply(call, call.service.startDownload(typeOf(call.request)));
}

void handleStartDownloadWithFileTypeAndCallback(MethodCall& call) {
    const LocalMgmtIfc::eFiletype type = typeOf(call.request);
    reply(call, call.service.startDownload(type, sender(call)));
}

void handleStartDownloadWithManyParams(MethodCall& call) {
    const ManyParams with(call.request);
    with.log("startDownloadWithManyParams");
    reply(call,
          call.service.startDownload(with.protocol, with.port, with.server, with.userName,
                                     with.password, with.type, with.sourcePath, with.fileName));
}

void handleStartDownloadWithManyParamsAndCallback(MethodCall& call) {
    const ManyParams with(call.request);
    const bool overrideBusy = call.request.getBoolParameter("overrideBusy", Parameter::eIn);
    with.log("startDownloadWithManyParamsAndCallback");
    reply(call, call.service.startDownload(with.protocol, with.port, with.server, with.userName,
                                           with.password, with.type, with.sourcePath, with.fileName,
                                           sender(call), overrideBusy));
}

void handleRequestCurrentDownloadStatus(MethodCall& call) {
    const LocalMgmtIfc::eFiletype type = typeOf(call.request);
    const int percent = call.service.requestCurrentDownloadStatus(
        type, call.request.getStringParameter("filename", Parameter::eIn));
    call.reply.addIntParameter(kResult, Parameter::eOut, percent);
}

void handleRefreshPictureClips(MethodCall& call) {
    call.service.refreshPictureClips();
}

}  // namespace vireo
