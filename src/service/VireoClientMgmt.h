#pragma once

#include <memory>
#include <string>

#include "LocalMgmtIfc.h"
#include "PeerWatcherIfc.h"
#include "RemoteMgmtIfc.h"
#include "ShutdownConsentIfc.h"
#include "data/DataCollection.h"
#include "device/AdminProgressCallback.h"
#include "device/DeviceReset.h"
#include "device/RemoteSubscriber.h"
#include "files/Downloads.h"
#include "files/FileDeploymentTimer.h"
#include "files/PhoneBusyState.h"
#include "files/UserFileAreas.h"
#include "items/AgentRegistrations.h"
#include "items/AgentRegistry.h"
#include "items/ChangeNotifier.h"
#include "items/DasBridge.h"
#include "items/GroupedWrites.h"
#include "items/ItemCatalogue.h"
#include "items/ItemReader.h"
#include "items/ItemWriter.h"
#include "items/ValueCache.h"
#include "items/WriteGroup.h"
#include "reporting/QDCReportMgr.h"
#include "reporting/SNMPTrapRouter.h"
#include "service/OwnItemManagers.h"
#include "service/Service.h"
#include "service/ServiceDirectory.h"

namespace vireo {

/// The client management service as the framework and its callers see it. Delegates to the
/// collaborators that it wires together.
class VireoClientMgmt : public Service,
                        public LocalMgmtIfc,
                        public RemoteMgmtIfc,
                        public AdminProgressCallback,
                        public ShutdownConsentIfc,
                        public GroupedWrites,
                        public PeerWatcherIfc {
public:
    VireoClientMgmt();
    ~VireoClientMgmt() override;

    void init(Context& context) override;
    void run() override {}
    void shutdown() override {}
    void timerEvent(int timerId) override;
    bool requestShutdown() override;
    void peerLeft(Executable& proxy) override;

    bool setData(ManageableData& record) override;
    bool takesInGroup(const ManageableData& record) override;
    void setDataInGroup(ManageableData record, WriteGroup::Done done) override;
    void finishGroup() override;
    void finishGroupBefore(const ManageableData& record) override;
    bool getData(ManageableData& record) override;
    bool getData(std::string tag, std::string& value) override;
    std::string findSchemaName(const std::string& tag) override;
    std::string exportSchema(const std::string& schemaName) override;
    bool getSchema(const std::string& schemaName, ManageableData& record) override;
    bool registerManagementIdentity(const std::string& managementId, MgmtAgentIfc* agent,
                                    bool bulk) override;
    bool registerManagementIdentity(const std::string& managementId, MgmtAgentIfc* agent) override;
    int observeManageableData(const std::string& rootId, MgmtAgentIfc* agent, bool bulk) override;
    int observeManageableData(const std::string& rootId, MgmtAgentIfc* agent) override;
    int observeManageableData(const std::list<std::string>& rootIds, MgmtAgentIfc* agent,
                              bool bulk) override;
    int observeManageableData(const std::list<std::string>& rootIds, MgmtAgentIfc* agent) override;
    bool stopObservingManageableData(const std::string& rootId, MgmtAgentIfc* agent) override;
    unsigned manageableDataChanged(ManageableData& record) override;

    int getFileTypeCountLimit(eFiletype type) override;
    int getFileTypeNameLimit(eFiletype type) override;
    std::string getFileTypeMetadata(eFiletype type) override;
    bool getFilePathFromType(eFiletype type, std::string& path) override;
    bool getFilePathFromType(eFiletype type, std::string& path, eUsertype user) override;
    bool validateFile(eFiletype type, const std::string& fileName) override;
    bool getListOfFilesOfType(eFiletype type, std::list<std::string>* files) override;
    bool getListOfFilesOfType(eFiletype type, std::list<std::string>* files,
                              eUsertype user) override;
    bool deleteFile(eFiletype type, const std::string& name) override;
    bool cleanupUserData(eFiletype type, eUsertype user) override;
    bool changeCurrentUser(eUsertype user) override;
    bool clearMobileUserData() override;
    bool getIDAndDisplayName(std::string& id, std::string& displayName) override;
    bool getUserDataSpaceInfo(MemoryInfo& info) override;
    bool startDownload(eFiletype type) override;
    bool startDownload(eFiletype type, Executable* callback) override;
    bool startDownload(eDownloadProtocol protocol, const std::string& port,
                       const std::string& server, const std::string& userName,
                       const std::string& password, eFiletype type, const std::string& sourcePath,
                       const std::string& fileName) override;
    bool startDownload(eDownloadProtocol protocol, const std::string& port,
                       const std::string& server, const std::string& userName,
                       const std::string& password, eFiletype type, const std::string& sourcePath,
                       const std::string& fileName, Executable* callback,
                       bool overrideBusy) override;
    int requestCurrentDownloadStatus(eFiletype type, const std::string& fileName) override;
    void refreshPictureClips() override;
    bool progressNotify(int percent) override;
    void setPhoneBusyStatus(unsigned bits) override;
    void clearPhoneBusyStatus(unsigned bits) override;
    unsigned retrievePhoneBusyStatus() override;
    bool raiseGenericTrap(TrapDest dest, int trap) override;
    bool raiseSpecificTrap(TrapDest dest, SNMPTrapData& data) override;
    void invalidateVCMSCache() override;
    int performFactoryReset(const std::string& password) override;
    int performReboot(std::string reason) override;
    int clearAllUserData() override;

    /// Deliberate: 0 when the password is accepted.
    int verifyFactoryResetPassword(const std::string& password);
    /// Resets the user's own items of this service; false when that fails.
    bool resetUserData();

    /// Tells the observers of every item of the record; the number of call-backs made.
    unsigned notifyObservers(const ManageableData& record);
    bool registerObserver(const std::string& rootId, MgmtAgentIfc* agent, bool bulk);
    bool unRegisterObserver(const std::string& rootId, MgmtAgentIfc* agent);
    MgmtAgentDetails findManageableProxy(const std::string& managementId);
    /// Deliberate: 1 when the item has any observers, however many, else 0.
    unsigned getNumberObservers(const std::string& rootId) const;

    bool subscribeForRemoteProgress(RemoteMgmtCallbackIfc* callback) override;
    bool unsubscribeForRemoteProgress(RemoteMgmtCallbackIfc* callback) override;

    /// One simple value, "???" when it cannot be read.
    std::string getValueFromVCMS(const std::string& tag);
    // The value cache, for whoever learns of a value otherwise.
    bool fetchFromVCMSCache(const std::string& tag, std::string& value);
    void updateVCMSCache(const std::string& tag, const std::string& value);
    void updateVCMSCache(const ManageableData& record);

    /// 1 "Varnick SIP", 2 "Varnick KSP", 3 "Varnick TDM"; 0, and asked again next time, while it is
    /// not known.
    int getSoftwareType();

private:
    void initSNMPTrapRouter();
    void initQDCReportMgr();
    void confirmBusyStatus(unsigned told);
    UserFileAreas::Surroundings areaSurroundings();
    DownloadStarter::Surroundings downloadSurroundings();
    DeviceReset::Surroundings resetSurroundings();

    ServiceDirectory m_directory;
    PhoneBusyState m_busyState;
    RemoteSubscriber m_remoteSubscriber;
    DataCollection m_dataCollections;
    ItemCatalogue m_catalogue;
    mutable AgentRegistry m_registry;
    ValueCache m_valueCache;
    AgentRegistrations m_registrations;
    ChangeNotifier m_notifier;
    DasBridge m_store;
    OwnItemManagers m_ownItems;
    ItemReader m_reader;
    ItemWriter m_writer;
    WriteGroup m_writeGroup;
    UserFileAreas m_areas;
    Downloads m_downloads;
    FileDeploymentTimer m_deploymentTimer{*this};
    DeviceReset m_deviceReset{resetSurroundings()};
    std::atomic<int> m_softwareType{0};
    std::unique_ptr<SNMPTrapRouter> m_trapRouter;
    std::unique_ptr<QDCReportMgr> m_qdcReports;
};

}  // namespace vireo
