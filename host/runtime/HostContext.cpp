#include "runtime/HostContext.h"

#include "log/Log.h"
#include "messages/MessageLoop.h"
#include "runtime/ServiceRegistry.h"

namespace vireo {

Executable* HostContext::findService(const std::string& interfaceName) {
    return m_services.find(interfaceName);
}

void HostContext::postToMessageThread(std::function<void()> task) {
    m_loop.postTask(std::move(task));
}

bool HostContext::notifyGoingDown() {
    if (loggingOnUni(kLogWarning)) {
        logAppUni("HostContext", "./host/runtime/HostContext", kLogWarning, __LINE__,
                  "the device is going down");
    }
    return true;
}

}  // namespace vireo
