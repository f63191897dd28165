#include <string>
#include <vector>

#include "LocalMgmtIfc.h"
#include "MgmtAgentIfc.h"
#include "Visibility.h"
#include "data/ManageableData.h"
#include "service/Context.h"
#include "service/Service.h"

namespace vireo::test {
namespace {

constexpr const char* kRead = "probe-read";
constexpr const char* kCallBack = "probe-call-back";
constexpr const char* kLog = "probe-log";
constexpr const char* kAnnounced = "probe-announced";
constexpr const char* kStored = "phone-name";
constexpr const char* kForeign = "handset-volume";

/// A service beside the client management service, told by writes of its items what to do:
///
///   probe-read       written a tag: makes a simple read of it; reads as the value, or "(failed)"
///   probe-call-back  calls the service in every way before it accepts the value
///   probe-log        what it was asked and told, in order, separated by blanks; writing it begins
///   a
///                    new one
///
/// Every other item takes what is written. Single items belong to "ProbeMgmtId", those that want to
/// come together to "ProbeBulkMgmtId".
class ProbeService : public Service, public MgmtAgentIfc {
public:
    void init(Context& context) override {
        auto* runTime = dynamic_cast<SvcRTEContext*>(&context);
        m_management = dynamic_cast<LocalMgmtIfc*>(runTime->findService("LocalMgmtIfc"));
    }
    void run() override {
        m_management->registerManagementIdentity("ProbeMgmtId", this, false);
        m_management->registerManagementIdentity("ProbeBulkMgmtId", this, true);
        m_management->observeManageableData(kAnnounced, this);
    }
    void shutdown() override {}

    bool getData(ManageableData& record) override {
        bool result = true;
        for (const std::string& tag : record.rootIds()) {
            result = record.populate(tag, tag == kRead  ? m_value
                                          : tag == kLog ? m_log
                                                        : "") &&
                     result;
        }
        return result;
    }

    bool setData(ManageableData& record) override {
        const std::vector<std::string> tags = record.rootIds();
        for (const std::string& tag : tags) {
            const std::string value = valueOf(record, tag);
            if (tag == kRead) {
                readSimply(value);
            } else if (tag == kLog) {
                m_log.clear();
            } else {
                note("set:" + tag);
            }
            if (tag == kCallBack) {
                callBack(value);
            }
        }
        return true;
    }

    bool manageableDataChanged(ManageableData& record) override {
        for (const std::string& tag : record.rootIds()) {
            note("told:" + tag + '=' + valueOf(record, tag));
        }
        return true;
    }
    bool resetUserData() override { return true; }

private:
    static std::string valueOf(const ManageableData& record, const std::string& tag) {
        std::string value;
        record.interogate(tag, tag, value);
        return value;
    }

    void note(const std::string& what) { m_log += (m_log.empty() ? "" : " ") + what; }

    void readSimply(const std::string& tag) {
        m_value = "(failed)";
        m_management->getData(tag, m_value);
    }

    void callBack(const std::string& value) {
        ManageableData announced;
        announced.populate(kAnnounced, value);
        note("announced:" + std::to_string(m_management->manageableDataChanged(announced)));
        ManageableData foreign;
        foreign.setRootId(kForeign, nullptr);
        const bool isRead = m_management->getData(foreign);
        note("read:" + std::to_string(static_cast<int>(isRead)) + ':' + valueOf(foreign, kForeign));
        m_management->stopObservingManageableData(kStored, this);  // of an earlier time
        note("observed:" + std::to_string(m_management->observeManageableData(kStored, this)));
        ManageableData own;
        own.populate(kStored, value);
        note("wrote:" + std::to_string(static_cast<int>(m_management->setData(own))));
    }

    LocalMgmtIfc* m_management = nullptr;
    std::string m_value;  // everything on the message thread
    std::string m_log;
};

}  // namespace
}  // namespace vireo::test

extern "C" VIREO_API vireo::Service* createService() {
    return new vireo::test::ProbeService();
}
