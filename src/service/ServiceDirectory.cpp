#include "service/ServiceDirectory.h"

#include "Boundary.h"
#include "service/Context.h"
#include "service/Executable.h"
#include "services/CertificateMgmtSvcIfc.h"
#include "services/DataAccessServiceIfc.h"
#include "services/InstrumentationServicePrivateIfc.h"
#include "services/MediaControlServiceIfc.h"
#include "services/MobilityServiceIfc.h"
#include "services/PasswordMgmtSvcIfc.h"
#include "services/PhysicalInterfaceServiceIfc.h"

namespace vireo {

template <class Interface>
Interface* ServiceDirectory::find(std::atomic<Interface*>& cached, const char* interfaceName) {
    Interface* known = cached.load();
    SvcRTEContext* context = m_context.load();
    if (known == nullptr && context != nullptr) {
        known = guarded(interfaceName, known, [&] {
            return dynamic_cast<Interface*>(context->findService(interfaceName));
        });
        cached.store(known);
    }
    return known;
}

CertificateMgmtSvcIfc* ServiceDirectory::getCertificateMgmtSvcIfc() {
    return find(m_certificates, "CertificateMgmtSvcIfc");
}

InstrumentationServicePrivateIfc* ServiceDirectory::instrumentationServicePrivateIfc() {
    return find(m_instrumentation, "InstrumentationServicePrivateIfc");
}

MediaControlServiceIfc* ServiceDirectory::mediaControlServiceIfc() {
    return find(m_mediaControl, "MediaControlServiceIfc");
}

PhysicalInterfaceServiceIfc* ServiceDirectory::physicalIfc() {
    return find(m_physical, "PhysicalInterfaceServiceIfc");
}

MobilityServiceIfc* ServiceDirectory::mobilityIfc() {
    return find(m_mobility, "MobilityServiceIfc");
}

PasswordMgmtSvcIfc* ServiceDirectory::passwordMgmtSvcIfc() {
    return find(m_passwords, "PasswordMgmtSvcIfc");
}

void ServiceDirectory::notifyGoingDown() {
    if (SvcRTEContext* const context = m_context.load()) {
        context->notifyGoingDown();
    }
}

DataAccessServiceIfc* ServiceDirectory::dataAccessIfc() {
    return find(m_dataAccess, "DataAccessServiceIfc");
}

}  // namespace vireo
