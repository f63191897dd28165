#include <filesystem>
#include <fstream>
#include <map>
#include <set>

#include "files/FileStorage.h"
#include "maintenance/DeviceShell.h"
#include "services/PasswordMgmtSvcIfc.h"
#include "unit/items/ItemHouse.h"
#include "unit/service/ServiceHouse.h"

namespace vireo::test {
namespace {

namespace fs = std::filesystem;

struct OnePassword : PasswordMgmtSvcIfc, Executable {
    int verifyPassword(int kind, const std::string& password) override {
        kinds.push_back(kind);
        return password == "right" ? 0 : refusal;
    }

    int refusal = 1;
    std::vector<int> kinds;
};

/// Everything that a reset does outside of the service, in order.
struct Effects : ShellPort, RebootPort {
    explicit Effects(const fs::path& root) : shell(root, false) {}
    int run(const std::string& command, std::string& error) override {
        done.push_back(command);
        return shell.run(command, error);
    }
    bool reboot(std::string& /*error*/) override {
        done.emplace_back("reboot");
        return true;
    }

    DeviceShell shell;
    std::vector<std::string> done;
};

struct GoingDownContext : TestContext {
    bool notifyGoingDown() override {
        told->emplace_back("going down");
        return false;
    }
    std::vector<std::string>* told = nullptr;
};

class DeviceResetTest : public ServiceHouse {
protected:
    DeviceResetTest() {
        installPorts({.log = &ports,
                      .config = &ports,
                      .storage = &storage,
                      .shell = &effects,
                      .reboot = &effects});
        setLogLevel(kLogReboot);
        std::string& items = ports.files["items.xml"];
        const std::string firstItem = "<item><rootId>melody";
        items.insert(items.find(firstItem),
                     "<item><rootId>phone-lock-timeout</rootId>"
                     "<schema>text</schema></item>");
        std::string text = smallPhoneStore();
        const std::string column = "<column name=\"Melody\"";
        text.insert(text.find(column) + column.size(), " reboot=\"true\"");
        std::string error;
        store = SqliteDataAccess::open(directory.file("reboot.db"),
                                       *StoreCatalogue::parse(text, error), error);
        phone.store = store.get();
        phone.told = &effects.done;
        phone.others["PasswordMgmtSvcIfc"] = &passwords;
    }

    static void set(VireoClientMgmt& one, const char* item, const std::string& value) {
        ManageableData record;
        record.populate(item, value);
        ASSERT_TRUE(one.setData(record)) << item;
    }
    void startAs(const char* softwareType) { startAs(service, softwareType); }
    void startAs(VireoClientMgmt& one, const char* softwareType) {
        one.init(phone);
        set(one, "software-type", softwareType);
    }
    void put(const std::string& name) {
        fs::create_directories((root / name).parent_path());
        std::ofstream(root / name) << name;
    }
    bool has(const std::string& name) const { return fs::exists(root / name); }
    std::set<std::string> tree() const {
        std::set<std::string> names;
        for (const auto& entry : fs::recursive_directory_iterator(root)) {
            names.insert(entry.path());
        }
        return names;
    }
    void needReboot() { set(service, "melody", "8"); }
    void setTimeout(const std::string& value) { set(service, "phone-lock-timeout", value); }

    const fs::path root = directory.path() / "root";
    const bool isMade = fs::create_directory(root);
    FileStorage storage{root, "data/vireo"};
    Effects effects{root};
    OnePassword passwords;
    GoingDownContext phone;
};

using Done = std::vector<std::string>;
constexpr const char* kCommand = "/bin/rm -rf /data/networking/*";

TEST_F(DeviceResetTest, WithoutAPasswordServiceOrWithAWrongPasswordNothingChanges) {
    EXPECT_EQ(service.verifyFactoryResetPassword("right"), 1) << "no context yet";
    put("data/vireo/midlets/own");
    put("Vireo_Deploy/networking/altHostname.sh");
    const std::set<std::string> before = tree();
    phone.others.clear();
    startAs("Varnick SIP");
    needReboot();
    EXPECT_EQ(service.verifyFactoryResetPassword("right"), 1);
    EXPECT_EQ(service.performFactoryReset("right"), 0);
    phone.others["PasswordMgmtSvcIfc"] = &passwords;
    EXPECT_EQ(service.performFactoryReset("wrong"), 0);
    EXPECT_EQ(tree(), before);
    EXPECT_EQ(effects.done, Done());
    EXPECT_EQ(ports.count(kLogError, "Invalid factory reset password! input=right"), 1);
    EXPECT_EQ(ports.count(kLogError, "Invalid factory reset password! input=wrong"), 1);
    passwords.refusal = -7;
    EXPECT_EQ(service.verifyFactoryResetPassword("wrong"), -7) << "the answer is passed on";
    EXPECT_EQ(service.verifyFactoryResetPassword("right"), 0);
    EXPECT_EQ(passwords.kinds, (std::vector<int>{3, 3, 3}));
}

TEST_F(DeviceResetTest, TheRebootIsAskedForThroughTheServiceWhenTheStoreNeedsIt) {
    struct Watched : VireoClientMgmt {
        int performReboot(std::string reason) override {
            reasons.push_back(reason);
            return 42;
        }
        std::vector<std::string> reasons;
    };
    Watched watched;
    watched.init(phone);
    EXPECT_EQ(watched.performFactoryReset("right"), 0);
    set(watched, "melody", "8");
    EXPECT_EQ(watched.performFactoryReset("right"), 42);
    EXPECT_EQ(watched.reasons, Done{"FactoryReset: requires reboot."});
    Watched without;
    phone.store = nullptr;
    without.init(phone);
    EXPECT_EQ(without.performFactoryReset("right"), 0) << "no store, no reboot";
    EXPECT_EQ(effects.done, (Done{kCommand, kCommand, kCommand}));
}

TEST_F(DeviceResetTest, AVisitorsFilesGoAsTheSoftwareHasIt) {
    const struct {
        const char* software;
        LocalMgmtIfc::eUsertype user;
        bool areDownloadsDeleted;
        bool isAreaCleared;
    } rows[] = {
        {"Varnick SIP", LocalMgmtIfc::USER_VISITOR, true, true},
        {"Varnick SIP", LocalMgmtIfc::USER_BASE, false, true},
        {"Varnick SIP", LocalMgmtIfc::USER_VISITOR_KSP, false, true},
        {"Varnick KSP", LocalMgmtIfc::USER_VISITOR, false, true},
        {"Varnick KSP", LocalMgmtIfc::USER_VISITOR_KSP, false, true},
        {"Varnick TDM", LocalMgmtIfc::USER_VISITOR_KSP, false, false},
        {"Varnick TDM", LocalMgmtIfc::USER_BASE, false, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.software) + ", user " + std::to_string(row.user));
        VireoClientMgmt one;
        startAs(one, row.software);
        one.changeCurrentUser(row.user);
        for (const std::string name : {"ldap/own", "images/own", "deleted/images/tombstone"}) {
            put("data/vireo/" + name);
            put("data/vireo/visitor/" + name);
        }
        one.performFactoryReset("right");
        for (const std::string name : {"ldap/own", "images/own", "deleted/images/tombstone"}) {
            EXPECT_FALSE(has("data/vireo/" + name)) << name;
        }
        EXPECT_EQ(has("data/vireo/visitor/ldap/own"), !row.areDownloadsDeleted);
        EXPECT_EQ(has("data/vireo/visitor/images/own"), !row.isAreaCleared);
        EXPECT_EQ(has("data/vireo/visitor/deleted/images/tombstone"), !row.isAreaCleared);
    }
}

TEST_F(DeviceResetTest, KeepsTheGenericMidletByItsNameWithTheSlash) {
    startAs("Varnick SIP");
    const std::map<std::string, bool> isKept{
        {"jar/GenericMidlet.jar", true},  {"midlets/GenericMidlet.jax", true},
        {"phd/GenericMidlet.ja", true},   {"jad/MyGenericMidlet.jad", false},
        {"jar/genericmidlet.jar", false}, {"jad/GenericMidlet.txt", false},
        {"logos/GenericMidlet", false}};
    for (const auto& [name, kept] : isKept) {
        put("data/vireo/" + name);
    }
    service.performFactoryReset("right");
    for (const auto& [name, kept] : isKept) {
        EXPECT_EQ(has("data/vireo/" + name), kept) << name;
    }
}

TEST_F(DeviceResetTest, WhatFailsDoesNotStopTheRest) {
    startAs("Varnick SIP");
    needReboot();
    service.updateVCMSCache("lazy", "old");
    installPorts({.log = &ports, .config = &ports, .shell = &effects, .reboot = &effects});
    EXPECT_EQ(service.performFactoryReset("right"), 1) << "without a storage";
    EXPECT_EQ(effects.done, (Done{kCommand, "going down", "reboot"})) << "in this order";
    const Done recorded{"FactoryReset: requires reboot."};
    EXPECT_EQ(ports.lines(1), recorded);
    EXPECT_EQ(ports.lines(kLogReboot), recorded);
    VireoClientMgmt alone;
    installPorts({.log = &ports});
    EXPECT_EQ(alone.performReboot("anyway"), 1) << "without a framework, and without a reboot";
    EXPECT_GT(ports.count(kLogError, "there is no storage"), 0);
    EXPECT_EQ(ports.count(kLogDebug, "Failed to Delete altHostname.sh"), 1);
    std::string value;
    EXPECT_FALSE(service.fetchFromVCMSCache("lazy", value)) << "nothing is remembered";
}

TEST_F(DeviceResetTest, ResetUserDataWritesTheLockTimeoutUnlessItIsTheOneAlready) {
    std::string& failing = ports.files["CallFailingItems.xml"];
    const std::string guarded = "<item><rootId>guarded";
    failing.insert(failing.find(guarded), "<item><rootId>phone-lock-timeout</rootId></item>");
    startAs("Varnick SIP");
    TestAgent observer;
    ASSERT_TRUE(service.registerObserver("phone-lock-timeout", &observer, false));
    setTimeout("30");
    service.setPhoneBusyStatus(1);
    EXPECT_FALSE(service.resetUserData()) << "not during a call";
    EXPECT_EQ(
        ports.count(kLogError, "VireoClientMgmt::resetUserData method failed to write Feature"), 1);
    service.clearPhoneBusyStatus(1);
    EXPECT_TRUE(service.resetUserData());
    EXPECT_TRUE(service.resetUserData());
    EXPECT_EQ(observer.told, (Texts{"phone-lock-timeout=30", "phone-lock-timeout=5"}))
        << "5 is not written again";
    VireoClientMgmt unborn;
    EXPECT_FALSE(unborn.resetUserData());
    EXPECT_EQ(ports.count(kLogDebug, "VireoClientMgmt::resetUserData() VCMS item not found"), 1);
}

struct ResetAgent : TestAgent {
    bool resetUserData() override {
        ++resets;
        return !onReset || onReset();
    }
    int resets = 0;
    std::function<bool()> onReset;
};

TEST_F(DeviceResetTest, AllAgentsAreAskedInTheOrderOfTheirIdsAndTheLastAnswerCounts) {
    startAs("Varnick SIP");
    EXPECT_EQ(service.clearAllUserData(), 0) << "there is no agent";
    std::string order;
    ResetAgent last;
    ResetAgent first;
    ResetAgent middle;
    const auto answering = [&order](char name, bool answer) {
        return [&order, name, answer] {
            order += name;
            return answer;
        };
    };
    first.onReset = answering('a', true);
    middle.onReset = [&]() -> bool {
        order += 'b';
        throw std::runtime_error("not today");
    };
    last.onReset = answering('c', true);
    ASSERT_TRUE(service.registerManagementIdentity("MgmtId-3", &last));
    ASSERT_TRUE(service.registerManagementIdentity("MgmtId-1", &first));
    ASSERT_TRUE(service.registerManagementIdentity("MgmtId-2", &middle));
    EXPECT_EQ(service.clearAllUserData(), 1);
    last.onReset = answering('c', false);
    EXPECT_EQ(service.clearAllUserData(), 0);
    EXPECT_EQ(order, "abcabc");
    EXPECT_EQ(ports.count(kLogError, "resetUserData of an agent: not today"), 2);
    EXPECT_EQ(ports.count(kLogDebug, "VireoClientMgmt::clearAllUserData() completed"), 3);
}

TEST_F(DeviceResetTest, AnAgentMayCallBackWhileAllAreReset) {
    startAs("Varnick SIP");
    ResetAgent late;
    ResetAgent busy;
    TestAgent observer;
    std::string heard;
    busy.onReset = [&] {
        EXPECT_TRUE(service.registerManagementIdentity("MgmtId-2", &late));
        setTimeout("77");
        heard = observer.told.empty() ? "nothing yet" : observer.told.back();
        std::string value;
        return service.getData("melody", value);
    };
    ASSERT_TRUE(service.registerObserver("phone-lock-timeout", &observer, false));
    ASSERT_TRUE(service.registerManagementIdentity("MgmtId-1", &busy));
    EXPECT_EQ(service.clearAllUserData(), 1);
    EXPECT_EQ(late.resets, 0) << "who registers meanwhile is not asked";
    EXPECT_EQ(heard, "nothing yet") << "observers are told when the registry is given back";
    EXPECT_EQ(observer.told, (Texts{"phone-lock-timeout=77", "phone-lock-timeout=5"}));
    busy.onReset = nullptr;
    EXPECT_EQ(service.clearAllUserData(), 1);
    EXPECT_EQ(late.resets, 1);
}

TEST_F(DeviceResetTest, ClearAllUserDataResetsTheFilesOfTheCurrentUserAndForgetsValues) {
    startAs("Varnick SIP");
    service.changeCurrentUser(LocalMgmtIfc::USER_VISITOR);
    put("Vireo_Deploy/ringtones/default");
    for (const char* name :
         {"visitor/ringtones/own", "visitor/deleted/ringtones/tombstone", "ringtones/own"}) {
        put(std::string("data/vireo/") + name);
    }
    service.updateVCMSCache("lazy", "old");
    service.clearAllUserData();
    EXPECT_FALSE(has("data/vireo/visitor/deleted/ringtones/tombstone"));
    EXPECT_TRUE(has("data/vireo/ringtones/own")) << "those of the base user are his";
    std::string value;
    EXPECT_FALSE(service.fetchFromVCMSCache("lazy", value));
    std::list<std::string> files;
    EXPECT_TRUE(service.getListOfFilesOfType(LocalMgmtIfc::FILETYPE_RINGER, &files));
    EXPECT_EQ(files, std::list<std::string>{root / "data/vireo/visitor/ringtones/default"})
        << "a visitor gets defaults, too, and is still the current user";
}

}  // namespace
}  // namespace vireo::test
