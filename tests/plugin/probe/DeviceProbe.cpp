#include <string>

#include "LocalMgmtIfc.h"
#include "MgmtAgentIfc.h"
#include "Visibility.h"
#include "data/ManageableData.h"
#include "device/HardwareVersion.h"
#include "device/Storage.h"
#include "service/Context.h"
#include "service/Service.h"
#include "service/TimerFacility.h"
#include "services/CertificateMgmtSvcIfc.h"
#include "services/MediaControlServiceIfc.h"
#include "services/MobilityServiceIfc.h"

namespace vireo::test {
namespace {

/// Says through its item what a service finds in the phone: the variant, where files lie, which
/// services there are, and how often its timer has fired since the start.
class DeviceProbe : public Service, public MgmtAgentIfc {
public:
    void init(Context& context) override { m_context = dynamic_cast<SvcRTEContext*>(&context); }
    void run() override {
        if (auto* const management = find<LocalMgmtIfc>("LocalMgmtIfc")) {
            management->registerManagementIdentity("DeviceProbeMgmtId", this, false);
        }
        if (TimerFacility* const timers = m_context->timers()) {
            m_timer = timers->create(*this, 1);
            timers->start(m_timer);
        }
    }
    void shutdown() override {}
    void timerEvent(int timerId) override { m_fired += timerId == m_timer ? 1 : 0; }

    bool getData(ManageableData& record) override {
        bool result = true;
        for (const std::string& tag : record.rootIds()) {
            result = record.populate(tag, report()) && result;
        }
        return result;
    }
    bool setData(ManageableData& /*record*/) override { return false; }
    bool manageableDataChanged(ManageableData& /*record*/) override { return true; }
    bool resetUserData() override { return true; }

private:
    template <class Interface>
    Interface* find(const char* name) const {
        return dynamic_cast<Interface*>(m_context->findService(name));
    }

    std::string report() const {
        std::string path = "probe/file";
        Storage::initStorageLocation(path, 0, false);
        SecurityDetails details;
        auto* const certificates = find<CertificateMgmtSvcIfc>("CertificateMgmtSvcIfc");
        auto* const media = find<MediaControlServiceIfc>("MediaControlServiceIfc");
        auto* const mobility = find<MobilityServiceIfc>("MobilityServiceIfc");
        if (mobility != nullptr) {
            mobility->refreshPictureClips();
        }
        const bool isCertified =
            certificates != nullptr && certificates->getSecurityDetails(details);
        const int check = media == nullptr ? -1 : media->checkAudioFile(media->eRinger, path);
        return HardwareVersion::getHWVariant() + ' ' + path +
               " certificates:" + std::to_string(isCertified ? details.certificates.size() : 0U) +
               " media:" + std::to_string(check) +
               " mobility:" + (mobility != nullptr ? "1" : "0") +
               " timer:" + std::to_string(m_fired);
    }

    SvcRTEContext* m_context = nullptr;
    int m_timer = -1;  // everything on the message thread, once it runs
    int m_fired = 0;
};

}  // namespace
}  // namespace vireo::test

extern "C" VIREO_API vireo::Service* createService() {
    return new vireo::test::DeviceProbe();
}
