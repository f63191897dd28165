#include "support/StressRun.h"
#include "unit/service/ServiceHouse.h"

namespace vireo::test {
namespace {

struct Subscriber : RemoteMgmtCallbackIfc {
    void informRemoteProgress(int, eRemoteOperationType) override {}
    void informRemoteWarning(eRemoteOperationType) override {}
};

/// Calls the service itself, on the thread that calls: by message there is only one.
class DirectCaller : public StressCaller {
public:
    explicit DirectCaller(VireoClientMgmt& service) : m_service(service) {}

    bool setData(ManageableData& record) override { return m_service.setData(record); }
    bool getData(ManageableData& record) override { return m_service.getData(record); }
    bool getValue(const std::string& tag, std::string& value) override {
        return m_service.getData(tag, value);
    }
    void callOther(unsigned choice, const std::string& tag) override {
        ManageableData record;
        switch (choice % 7) {
            case 0:
                m_service.invalidateVCMSCache();
                break;
            case 1:
                EXPECT_NE(m_service.exportSchema(m_service.findSchemaName(tag)), "");
                break;
            case 2:
                EXPECT_TRUE(m_service.getSchema(m_service.findSchemaName(tag), record));
                break;
            case 3:
                EXPECT_NE(m_service.getValueFromVCMS(tag).find('#'), std::string::npos);
                break;
            case 4:
                EXPECT_EQ(m_service.getSoftwareType(), 0);
                break;
            case 5:
                m_service.updateVCMSCache("nobody's", tag);
                break;
            default:
                if (m_service.subscribeForRemoteProgress(&m_subscriber)) {
                    warnOfMemory();
                    EXPECT_TRUE(m_service.unsubscribeForRemoteProgress(&m_subscriber));
                }
        }
    }

private:
    void warnOfMemory() {
        ManageableData record;
        record.populate("memory-monitor-remote-callback", "1");
        EXPECT_TRUE(m_service.setData(record));
    }

    VireoClientMgmt& m_service;
    Subscriber m_subscriber;
};

using ServiceStress = ServiceHouse;

TEST_F(ServiceStress, TwentyThreadsReadWhatWasWrittenAndLoseNothing) {
    setLogLevel(kLogError);
    start();
    StressRun({"melody", "volume", "lazy", "key-1", "plain", "lazy-2", "key-2", "guarded"}, [this] {
        return std::make_unique<DirectCaller>(service);
    }).run();
    EXPECT_EQ(ports.lines(kLogError), std::vector<std::string>());
}

}  // namespace
}  // namespace vireo::test
