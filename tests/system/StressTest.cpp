#include "support/ProcessState.h"
#include "support/Records.h"
#include "support/RunningPhone.h"
#include "support/StressRun.h"

namespace vireo::test {
namespace {

/// Calls by message. Every call has to be answered.
class MessageCaller : public StressCaller {
public:
    MessageCaller(std::unique_ptr<LocalMgmtClient> client, unsigned thread)
        : m_client(std::move(client)), m_busyBit(2U << thread) {
        m_client->setTimeout(std::chrono::seconds(60));
    }

    bool setData(ManageableData& record) override {
        bool result = false;
        EXPECT_EQ(m_client->setData(record, result), CallStatus::eDone);
        return result;
    }
    bool getData(ManageableData& record) override {
        bool result = false;
        EXPECT_EQ(m_client->getData(record, result), CallStatus::eDone);
        return result;
    }
    bool getValue(const std::string& tag, std::string& value) override {
        ManageableData record = requestFor({tag});
        return getData(record) && record.interogate(tag, tag, value);
    }
    void callOther(unsigned choice, const std::string& tag) override {
        std::string name;
        std::string text;
        ManageableData record;
        bool result = false;
        EXPECT_EQ(m_client->findSchemaName(tag, name), CallStatus::eDone);
        switch (choice % 4) {
            case 0:
                EXPECT_EQ(m_client->invalidateVCMSCache(), CallStatus::eDone);
                break;
            case 1:
                EXPECT_EQ(m_client->exportSchema(name, text), CallStatus::eDone);
                EXPECT_NE(text.find('"' + name + '"'), std::string::npos) << text;
                break;
            case 2:
                keepBusy();
                break;
            default:
                EXPECT_EQ(m_client->getSchema(name, record, result), CallStatus::eDone);
                EXPECT_TRUE(result && record.getSchema(name));
        }
    }

private:
    /// Only this thread knows its bit.
    void keepBusy() {
        unsigned mask = 0;
        EXPECT_EQ(m_client->setPhoneBusyStatus(m_busyBit), CallStatus::eDone);
        EXPECT_EQ(m_client->retrievePhoneBusyStatus(mask), CallStatus::eDone);
        EXPECT_NE(mask & m_busyBit, 0U);
        EXPECT_EQ(m_client->clearPhoneBusyStatus(m_busyBit), CallStatus::eDone);
    }

    std::unique_ptr<LocalMgmtClient> m_client;
    unsigned m_busyBit;  // never that of a call, which refuses writes
};

TEST(Stress, TwentyClientsReadWhatWasWrittenAndLoseNothing) {
    RunningPhone phone;
    // Those of the media service are kept for it in memory, the others in the store.
    StressRun(
        {"ringer-melody", "ringer-volume", "language", "country", "phone-name", "sip-realm",
         "key-label-1", "key-label-2", "handset-volume", "headset-volume", "time-format",
         "display-theme", "date-format", "display-contrast", "sip-user", "display-brightness"},
        [&phone](unsigned thread) -> std::unique_ptr<StressCaller> {
            auto client = phone.connect();
            return client ? std::make_unique<MessageCaller>(std::move(client), thread) : nullptr;
        })
        .run();
    unsigned mask = 1;
    EXPECT_EQ(phone.connect()->retrievePhoneBusyStatus(mask), CallStatus::eDone);
    EXPECT_EQ(mask, 0U);
    if (!kIsSanitized) {
        EXPECT_LT(peakMemory(phone.process->pid()), 256L << 10);
    }
}

}  // namespace
}  // namespace vireo::test
