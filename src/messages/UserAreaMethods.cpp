#include "messages/UserAreaMethods.h"

#include <string>

#include "LocalMgmtIfc.h"
#include "device/MemoryInfo.h"
#include "messages/MethodTable.h"
#include "messages/TextEnumerations.h"

namespace vireo {
namespace {

constexpr const char* kIdentifier = "identifier";
constexpr const char* kDisplayName = "displayname";

void replyResult(MethodCall& call, bool result) {
    call.reply.addBoolParameter("result", Parameter::eOut, result);
}

}  // namespace

void handleGetIDAndDisplayName(MethodCall& call) {
    std::string id = call.request.getStringParameter(kIdentifier, Parameter::eInOut);
    std::string name = call.request.getStringParameter(kDisplayName, Parameter::eInOut);
    const bool result = call.service.getIDAndDisplayName(id, name);
    call.reply.addStringParameter(kIdentifier, Parameter::eOut, std::move(id));
    call.reply.addStringParameter(kDisplayName, Parameter::eOut, std::move(name));
    replyResult(call, result);
}

void handleChangeCurrentUser(MethodCall& call) {
    const std::string& user = call.request.getStringParameter("userType", Parameter::eIn);
    replyResult(call, call.service.changeCurrentUser(convertStringToUserTypeEnum(user)));
}

void handleClearMobileUserData(MethodCall& call) {
    replyResult(call, call.service.clearMobileUserData());
}

void handleCleanupUserData(MethodCall& call) {
    const std::string& type = call.request.getStringParameter("filetype", Parameter::eIn);
    const auto user = static_cast<LocalMgmtIfc::eUsertype>(
        call.request.getIntParameter("userType", Parameter::eIn));
    replyResult(call, call.service.cleanupUserData(convertXMLStringToFileTypeEnum(type), user));
}

void handleGetUserDataSpaceInfo(MethodCall& call) {
    MemoryInfo info;
    call.service.getUserDataSpaceInfo(info);
    // Deliberate: it acknowledges success whatever could be found out.
    call.reply.addStringParameter("Acknowledge", Parameter::eOut, "SUCCESS");
    call.reply.addStringParameter("spaceinfo", Parameter::eOut, info.serialize());
}

}  // namespace vireo
