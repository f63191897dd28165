#include "messages/BusyMethods.h"

#include "LocalMgmtIfc.h"
#include "messages/MethodTable.h"

namespace vireo {
namespace {

constexpr const char* kMask = "busyStatus";

// The mask is unsigned and travels as an int of the same bits.
unsigned bitsOf(const Method& request) {
    return static_cast<unsigned>(request.getIntParameter(kMask, Parameter::eIn));
}

}  // namespace

void handleSetPhoneBusyStatus(MethodCall& call) {
    call.service.setPhoneBusyStatus(bitsOf(call.request));
}

void handleRetrievePhoneBusyStatus(MethodCall& call) {
    const unsigned mask = call.service.retrievePhoneBusyStatus();
    call.reply.addIntParameter(kMask, Parameter::eOut, static_cast<int>(mask));
}

void handleClearPhoneBusyStatus(MethodCall& call) {
    call.service.clearPhoneBusyStatus(bitsOf(call.request));
}

}  // namespace vireo
