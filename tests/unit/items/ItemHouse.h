#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "LocalMgmtIfc.h"
#include "data/DataCollection.h"
#include "data/ManageableData.h"
#include "items/AgentRegistry.h"
#include "items/ChangeNotifier.h"
#include "items/DasBridge.h"
#include "items/ItemCatalogue.h"
#include "items/ItemReader.h"
#include "items/ItemWriter.h"
#include "items/OwnItems.h"
#include "items/ValueCache.h"
#include "store/SqliteDataAccess.h"
#include "support/SmallPhone.h"
#include "support/TemporaryDirectory.h"
#include "unit/items/TestAgent.h"

namespace vireo::test {

/// The service's own managers, as a test sets them.
struct OwnItemsInHand : OwnItems {
    bool readLockedDown(const std::string& rootId, std::string& value) override {
        calls.push_back("readLockedDown " + rootId);
        value = "locked";
        return true;
    }
    bool changeLockedDown(const std::string& rootId, const std::string& value) override {
        calls.push_back("changeLockedDown " + rootId + "=" + value);
        return lockAccepts;
    }
    bool flushLockedDown() override {
        calls.emplace_back("flushLockedDown");
        return true;
    }
    bool readFileRequest(const std::string& rootId, std::string& /*value*/) override {
        calls.push_back("readFileRequest " + rootId);
        return false;
    }
    bool changeFileRequest(const std::string& rootId, const std::string& value,
                           std::string& reason) override {
        calls.push_back("changeFileRequest " + rootId + "=" + value);
        reason = "no room";
        return value != "bad";
    }
    bool flushFileRequests(FileRequestStatuses& out) override {
        calls.emplace_back("flushFileRequests");
        out = statuses;
        return true;
    }
    unsigned phoneBusyStatus() override { return busy; }
    bool warnRemoteSubscriber(RemoteMgmtCallbackIfc::eRemoteOperationType type) override {
        calls.push_back("warn " + std::to_string(type));
        return true;
    }

    std::vector<std::string> calls;
    FileRequestStatuses statuses;
    unsigned busy = 0;
    bool lockAccepts = true;
};

/// The item functions of the service's face; the others are not called here.
struct ItemFace : LocalMgmtIfc {
    using Access = std::function<bool(ManageableData&)>;

    ItemFace(Access read, Access write, std::function<std::string(const std::string&)> schema)
        : onGet(std::move(read)), onSet(std::move(write)), onSchemaName(std::move(schema)) {}

    bool setData(ManageableData& record) override { return onSet(record); }
    bool getData(ManageableData& record) override { return onGet(record); }
    std::string findSchemaName(const std::string& tag) override { return onSchemaName(tag); }

    bool getData(std::string, std::string&) override { return false; }
    std::string exportSchema(const std::string&) override { return {}; }
    bool getSchema(const std::string&, ManageableData&) override { return false; }
    bool registerManagementIdentity(const std::string&, MgmtAgentIfc*, bool) override {
        return false;
    }
    bool registerManagementIdentity(const std::string&, MgmtAgentIfc*) override { return false; }
    int observeManageableData(const std::string& rootId, MgmtAgentIfc* agent, bool bulk) override {
        return onObserve(rootId, agent, bulk);
    }
    int observeManageableData(const std::string&, MgmtAgentIfc*) override { return 0; }
    int observeManageableData(const std::list<std::string>&, MgmtAgentIfc*, bool) override {
        return 0;
    }
    int observeManageableData(const std::list<std::string>&, MgmtAgentIfc*) override { return 0; }
    bool stopObservingManageableData(const std::string&, MgmtAgentIfc*) override { return false; }
    unsigned manageableDataChanged(ManageableData&) override { return 0; }
    int getFileTypeCountLimit(eFiletype) override { return 0; }
    int getFileTypeNameLimit(eFiletype) override { return 0; }
    std::string getFileTypeMetadata(eFiletype) override { return {}; }
    bool getFilePathFromType(eFiletype, std::string&) override { return false; }
    bool getFilePathFromType(eFiletype, std::string&, eUsertype) override { return false; }
    bool validateFile(eFiletype, const std::string&) override { return false; }
    bool getListOfFilesOfType(eFiletype, std::list<std::string>*) override { return false; }
    bool getListOfFilesOfType(eFiletype, std::list<std::string>*, eUsertype) override {
        return false;
    }
    bool deleteFile(eFiletype, const std::string&) override { return false; }
    bool cleanupUserData(eFiletype, eUsertype) override { return false; }
    bool changeCurrentUser(eUsertype) override { return false; }
    bool clearMobileUserData() override { return false; }
    bool getIDAndDisplayName(std::string&, std::string&) override { return false; }
    bool getUserDataSpaceInfo(MemoryInfo&) override { return false; }
    bool startDownload(eFiletype) override { return false; }
    bool startDownload(eFiletype, Executable*) override { return false; }
    bool startDownload(eDownloadProtocol, const std::string&, const std::string&,
                       const std::string&, const std::string&, eFiletype, const std::string&,
                       const std::string&) override {
        return false;
    }
    bool startDownload(eDownloadProtocol, const std::string&, const std::string&,
                       const std::string&, const std::string&, eFiletype, const std::string&,
                       const std::string&, Executable*, bool) override {
        return false;
    }
    int requestCurrentDownloadStatus(eFiletype, const std::string&) override { return -1; }
    void refreshPictureClips() override {}
    void setPhoneBusyStatus(unsigned) override {}
    void clearPhoneBusyStatus(unsigned) override {}
    unsigned retrievePhoneBusyStatus() override { return 0; }
    bool raiseGenericTrap(TrapDest, int) override { return false; }
    bool raiseSpecificTrap(TrapDest, SNMPTrapData&) override { return false; }
    void invalidateVCMSCache() override {}
    int performFactoryReset(const std::string&) override { return 0; }
    int performReboot(std::string) override { return 0; }
    int clearAllUserData() override { return 0; }

    Access onGet;
    Access onSet;
    std::function<std::string(const std::string&)> onSchemaName;
    std::function<int(const std::string&, MgmtAgentIfc*, bool)> onObserve;
};

/// The real store with its requests written down.
struct WatchedStore : DataAccessServiceIfc {
    explicit WatchedStore(DataAccessServiceIfc& store) : real(store) {}

    std::string request(const std::string& text) override {
        requests.push_back(text);
        if (fails) {
            throw std::runtime_error("store is gone");
        }
        return real.request(text);
    }
    void beginUpdate() override { real.beginUpdate(); }
    bool commitUpdate() override { return real.commitUpdate(); }
    bool isRebootRequired() override { return real.isRebootRequired(); }

    DataAccessServiceIfc& real;
    std::vector<std::string> requests;
    bool fails = false;
};

/// The item rooms wired together on a small phone and a real store.
class ItemHouse : public ::testing::Test {
protected:
    ItemHouse() {
        installSmallPhone(ports);
        std::string error;
        sqlite = SqliteDataAccess::open(directory.file("store.db"),
                                        *StoreCatalogue::parse(smallPhoneStore(), error), error);
        store.emplace(*sqlite);
    }

    void load() { ASSERT_TRUE(catalogue.load(collections)); }

    /// Writes items and answers the refusals as "tag: reason".
    std::vector<std::string> set(const std::vector<std::pair<std::string, std::string>>& items,
                                 bool expectedResult) {
        ManageableData record;
        for (const auto& [tag, value] : items) {
            EXPECT_TRUE(record.populate(tag, tag, value)) << tag;
        }
        EXPECT_EQ(writer.setData(record), expectedResult);
        for (const RejectionSpec& refusal : record.rejections()) {
            EXPECT_EQ(refusal.nodePath(), "//*");
        }
        return refusalsOf(record);
    }

    /// The item's value as a read answers it, or "(failed)".
    std::string get(const std::string& tag) {
        ManageableData record = requestFor({tag});
        std::string value;
        return reader.getData(record) && record.interogate(tag, tag, value) ? value : "(failed)";
    }

    TestPorts ports;
    TemporaryDirectory directory;
    std::unique_ptr<SqliteDataAccess> sqlite;
    std::optional<WatchedStore> store;
    ItemFace face{[this](ManageableData& record) { return reader.getData(record); },
                  [this](ManageableData& record) { return writer.setData(record); },
                  [this](const std::string& tag) { return catalogue.findSchemaName(tag); }};
    DataCollection collections{&face};
    ItemCatalogue catalogue;
    AgentRegistry registry;
    ValueCache cache{catalogue};
    ChangeNotifier notifier{registry, cache, catalogue.master()};
    DasBridge bridge{catalogue, [this] { return store ? &*store : nullptr; }};
    OwnItemsInHand ownItems;
    ItemReader reader{catalogue, collections, registry, bridge, cache, ownItems};
    ItemWriter writer{catalogue, collections, registry, bridge, notifier, ownItems};
};

using Texts = Words;

}  // namespace vireo::test
