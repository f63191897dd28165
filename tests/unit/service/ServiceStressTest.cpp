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
    DirectCaller(VireoClientMgmt& service, unsigned thread)
        : m_service(service), m_busyBit(2U << thread) {}

    bool setData(ManageableData& record) override { return m_service.setData(record); }
    bool getData(ManageableData& record) override { return m_service.getData(record); }
    bool getValue(const std::string& tag, std::string& value) override {
        return m_service.getData(tag, value);
    }
    void callOther(unsigned choice, const std::string& tag) override {
        ManageableData record;
        switch (choice % 9) {
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
            case 6:
                m_service.setPhoneBusyStatus(m_busyBit);
                EXPECT_NE(m_service.retrievePhoneBusyStatus() & m_busyBit, 0U);
                m_service.clearPhoneBusyStatus(m_busyBit);
                break;
            case 7:
                record = requestFor({"pair", "overlap"});
                EXPECT_TRUE(m_service.getData(record));
                EXPECT_TRUE(record.getDocument("melody") && record.getDocument("volume"));
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
        ManageableData record = recordOf({"memory-monitor-remote-callback=1"});
        EXPECT_TRUE(m_service.setData(record));
    }

    VireoClientMgmt& m_service;
    unsigned m_busyBit;  // of this thread alone, and never that of a call, which refuses writes
    Subscriber m_subscriber;
};

using ServiceStress = ServiceHouse;

TEST_F(ServiceStress, TwentyThreadsReadWhatWasWrittenAndLoseNothing) {
    setLogLevel(kLogError);
    start();
    ports.forgetLines();  // this phone has no voice-quality items, and has said so
    StressRun({"melody", "volume", "lazy", "key-1", "lazy-2", "guarded"}, [this](unsigned thread) {
        return std::make_unique<DirectCaller>(service, thread);
    }).run();
    EXPECT_EQ(service.retrievePhoneBusyStatus(), 0U);
    EXPECT_EQ(ports.lines(kLogError), std::vector<std::string>());
}

}  // namespace
}  // namespace vireo::test
