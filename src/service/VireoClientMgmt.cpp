#include "service/VireoClientMgmt.h"

#include "Boundary.h"
#include "data/ManageableData.h"
#include "files/FileTypeCatalogue.h"
#include "service/Context.h"

namespace vireo {

VireoClientMgmt::VireoClientMgmt()
    : m_busyState(*this),
      m_dataCollections(this),
      m_valueCache(m_catalogue),
      m_registrations(m_catalogue, m_dataCollections, m_registry, m_valueCache),
      m_notifier(m_registry, m_valueCache, m_catalogue.master()),
      m_store(m_catalogue, [this] { return m_directory.dataAccessIfc(); }),
      m_ownItems(m_busyState, m_remoteSubscriber),
      m_reader(m_catalogue, m_dataCollections, m_registry, m_store, m_valueCache, m_ownItems),
      m_writer(m_catalogue, m_dataCollections, m_registry, m_store, m_notifier, m_ownItems),
      m_writeGroup(m_writer),
      m_areas(areaSurroundings()),
      m_downloads(downloadSurroundings(),
                  {.media = [this] { return m_directory.mediaControlServiceIfc(); },
                   .mobility = [this] { return m_directory.mobilityIfc(); },
                   .remote = [this](int percent) { m_remoteSubscriber.tellProgress(percent); }}) {}

VireoClientMgmt::~VireoClientMgmt() = default;

void VireoClientMgmt::init(Context& context) {
    guardedCall("init", [&] {
        VCMS_LOG(kLogDebug, "VCMS - Initializing");
        auto* runTime = dynamic_cast<SvcRTEContext*>(&context);
        if (runTime == nullptr) {
            VCMS_LOG(kLogError, "dynamic cast failed in init.");
            return;
        }
        m_directory.setContext(runTime);
        m_deploymentTimer.setFacility(runTime->timers());
        if (!m_catalogue.load(m_dataCollections)) {
            return;
        }
        initSNMPTrapRouter();
        initQDCReportMgr();
        m_ownItems.startLockDown(*this, *runTime);
        m_ownItems.startFileDeployment(*this);
        VCMS_LOG(kLogDebug, "VCMS - initialised");
    });
}

void VireoClientMgmt::initSNMPTrapRouter() {
    if (!m_trapRouter) {
        m_trapRouter = std::make_unique<SNMPTrapRouter>(&m_registry.semaphore());
        m_trapRouter->init(this);
    }
}

void VireoClientMgmt::initQDCReportMgr() {
    if (!m_qdcReports) {
        m_qdcReports = std::make_unique<QDCReportMgr>(this);
    }
}

bool VireoClientMgmt::setData(ManageableData& record) {
    return guarded("setData", false, [&] { return m_writer.setData(record); });
}

bool VireoClientMgmt::takesInGroup(const ManageableData& record) {
    return guarded("setData", false, [&] { return m_writeGroup.takes(record); });
}

void VireoClientMgmt::setDataInGroup(ManageableData record, WriteGroup::Done done) {
    guardedCall("setData", [&] { m_writeGroup.add(std::move(record), std::move(done)); });
}

void VireoClientMgmt::finishGroup() {
    guardedCall("setData", [&] { m_writeGroup.finish(); });
}

void VireoClientMgmt::finishGroupBefore(const ManageableData& record) {
    guardedCall("setData", [&] { m_writeGroup.finishBefore(record); });
}

bool VireoClientMgmt::getData(ManageableData& record) {
    return guarded("getData", false, [&] { return m_reader.getData(record); });
}

bool VireoClientMgmt::getData(std::string tag, std::string& value) {
    return guarded("getData", false, [&] { return m_reader.getData(tag, value); });
}

std::string VireoClientMgmt::findSchemaName(const std::string& tag) {
    return guarded("findSchemaName", std::string(),
                   [&] { return m_catalogue.findSchemaName(tag); });
}

std::string VireoClientMgmt::exportSchema(const std::string& schemaName) {
    return guarded("exportSchema", std::string(), [&] {
        const auto schema = m_catalogue.master().getSchema(schemaName);
        return schema ? schema->text() : std::string();
    });
}

bool VireoClientMgmt::getSchema(const std::string& schemaName, ManageableData& record) {
    return guarded("getSchema", false,
                   [&] { return record.copySchema(schemaName, m_catalogue.master()); });
}

bool VireoClientMgmt::registerManagementIdentity(const std::string& managementId,
                                                 MgmtAgentIfc* agent, bool bulk) {
    return guarded("registerManagementIdentity", false, [&] {
        return m_registrations.registerManagementIdentity(managementId, agent, bulk);
    });
}

bool VireoClientMgmt::registerManagementIdentity(const std::string& managementId,
                                                 MgmtAgentIfc* agent) {
    return registerManagementIdentity(managementId, agent, false);
}

int VireoClientMgmt::observeManageableData(const std::string& rootId, MgmtAgentIfc* agent,
                                           bool bulk) {
    return guarded("observeManageableData", 0,
                   [&] { return m_registrations.observeManageableData(rootId, agent, bulk); });
}

int VireoClientMgmt::observeManageableData(const std::string& rootId, MgmtAgentIfc* agent) {
    return observeManageableData(rootId, agent, false);
}

int VireoClientMgmt::observeManageableData(const std::list<std::string>& rootIds,
                                           MgmtAgentIfc* agent, bool bulk) {
    return guarded("observeManageableData", 0,
                   [&] { return m_registrations.observeManageableData(rootIds, agent, bulk); });
}

int VireoClientMgmt::observeManageableData(const std::list<std::string>& rootIds,
                                           MgmtAgentIfc* agent) {
    return observeManageableData(rootIds, agent, false);
}

bool VireoClientMgmt::stopObservingManageableData(const std::string& rootId, MgmtAgentIfc* agent) {
    return guarded("stopObservingManageableData", false,
                   [&] { return m_registrations.stopObservingManageableData(rootId, agent); });
}

bool VireoClientMgmt::registerObserver(const std::string& rootId, MgmtAgentIfc* agent, bool bulk) {
    return guarded("registerObserver", false,
                   [&] { return m_registrations.registerObserver(rootId, agent, bulk); });
}

bool VireoClientMgmt::unRegisterObserver(const std::string& rootId, MgmtAgentIfc* agent) {
    return guarded("unRegisterObserver", false,
                   [&] { return m_registrations.unRegisterObserver(rootId, agent); });
}

MgmtAgentDetails VireoClientMgmt::findManageableProxy(const std::string& managementId) {
    return m_registry.findManageableProxy(managementId);
}

unsigned VireoClientMgmt::getNumberObservers(const std::string& rootId) const {
    return m_registry.getNumberObservers(rootId);
}

unsigned VireoClientMgmt::manageableDataChanged(ManageableData& record) {
    return notifyObservers(record);
}

unsigned VireoClientMgmt::notifyObservers(const ManageableData& record) {
    return guarded("notifyObservers", 0U,
                   [&] { return m_notifier.announce(record, m_notifier.begin()); });
}

void VireoClientMgmt::setPhoneBusyStatus(unsigned bits) {
    guardedCall("setPhoneBusyStatus", [&] { confirmBusyStatus(m_busyState.set(bits)); });
}

void VireoClientMgmt::clearPhoneBusyStatus(unsigned bits) {
    guardedCall("clearPhoneBusyStatus", [&] { confirmBusyStatus(m_busyState.clear(bits)); });
}

void VireoClientMgmt::confirmBusyStatus(unsigned told) {
    // Observers are told after this thread has given the registry back.
    RegistrySemaphore& registry = m_registry.semaphore();
    if (registry.isMine()) {
        registry.afterGive([this, told] { m_busyState.confirm(told); });
    }
}

unsigned VireoClientMgmt::retrievePhoneBusyStatus() {
    return m_busyState.mask();
}

bool VireoClientMgmt::raiseGenericTrap(TrapDest dest, int trap) {
    return guarded("raiseGenericTrap", false, [&] {
        return m_trapRouter != nullptr && m_trapRouter->raiseGenericTrap(dest, trap);
    });
}

bool VireoClientMgmt::raiseSpecificTrap(TrapDest dest, SNMPTrapData& data) {
    return guarded("raiseSpecificTrap", false, [&] {
        return m_trapRouter != nullptr && m_trapRouter->raiseSpecificTrap(dest, data);
    });
}

void VireoClientMgmt::invalidateVCMSCache() {
    VCMS_LOG(kLogDebug, "invalidateVCMSCache");
    m_valueCache.invalidate();
}

std::string VireoClientMgmt::getValueFromVCMS(const std::string& tag) {
    return guarded("getValueFromVCMS", std::string("???"),
                   [&] { return m_reader.getValueFromVCMS(tag); });
}

bool VireoClientMgmt::fetchFromVCMSCache(const std::string& tag, std::string& value) {
    return guarded("fetchFromVCMSCache", false, [&] { return m_valueCache.fetch(tag, value); });
}

void VireoClientMgmt::updateVCMSCache(const std::string& tag, const std::string& value) {
    guardedCall("updateVCMSCache", [&] { m_valueCache.update(tag, value); });
}

void VireoClientMgmt::updateVCMSCache(const ManageableData& record) {
    guardedCall("updateVCMSCache", [&] { m_valueCache.update(record); });
}

bool VireoClientMgmt::subscribeForRemoteProgress(RemoteMgmtCallbackIfc* callback) {
    return m_remoteSubscriber.subscribe(callback);
}

bool VireoClientMgmt::unsubscribeForRemoteProgress(RemoteMgmtCallbackIfc* callback) {
    return m_remoteSubscriber.unsubscribe(callback);
}

int VireoClientMgmt::getSoftwareType() {
    if (m_softwareType == 0) {
        const std::string type = guarded("getSoftwareType", std::string(), [this] {
            ManageableData record;
            record.setRootId("software-type", nullptr);
            const DataNode node = getData(record) ? record.interogate("software-type") : DataNode();
            return node ? node->value() : std::string();
        });
        if (type == "Varnick KSP") {
            m_softwareType = 2;
        } else if (type == "Varnick TDM") {
            m_softwareType = 3;
        } else if (type == "Varnick SIP") {
            m_softwareType = 1;
        }
    }
    return m_softwareType;
}

}  // namespace vireo
