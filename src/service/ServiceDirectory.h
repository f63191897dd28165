#pragma once

#include <atomic>

namespace vireo {

class CertificateMgmtSvcIfc;
class DataAccessServiceIfc;
class InstrumentationServicePrivateIfc;
class MediaControlServiceIfc;
class MobilityServiceIfc;
class PasswordMgmtSvcIfc;
class PhysicalInterfaceServiceIfc;
class SvcRTEContext;

/// Finds the other services of the phone by their interface names. What was found is kept; what
/// was not is asked for again at the next call. Safe from every thread.
class ServiceDirectory {
public:
    /// `context` is not owned and outlives the directory.
    void setContext(SvcRTEContext* context) { m_context = context; }

    // Each answers null while there is no such service. What it answers is not owned.
    CertificateMgmtSvcIfc* getCertificateMgmtSvcIfc();
    InstrumentationServicePrivateIfc* instrumentationServicePrivateIfc();
    MediaControlServiceIfc* mediaControlServiceIfc();
    PhysicalInterfaceServiceIfc* physicalIfc();
    MobilityServiceIfc* mobilityIfc();
    PasswordMgmtSvcIfc* passwordMgmtSvcIfc();
    DataAccessServiceIfc* dataAccessIfc();

    /// Tells the framework, if there is one, that the device is about to be rebooted.
    void notifyGoingDown();

private:
    template <class Interface>
    Interface* find(std::atomic<Interface*>& cached, const char* interfaceName);

    std::atomic<SvcRTEContext*> m_context{nullptr};
    std::atomic<CertificateMgmtSvcIfc*> m_certificates{nullptr};
    std::atomic<InstrumentationServicePrivateIfc*> m_instrumentation{nullptr};
    std::atomic<MediaControlServiceIfc*> m_mediaControl{nullptr};
    std::atomic<PhysicalInterfaceServiceIfc*> m_physical{nullptr};
    std::atomic<MobilityServiceIfc*> m_mobility{nullptr};
    std::atomic<PasswordMgmtSvcIfc*> m_passwords{nullptr};
    std::atomic<DataAccessServiceIfc*> m_dataAccess{nullptr};
};

}  // namespace vireo
