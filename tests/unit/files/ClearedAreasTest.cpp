#include <gmock/gmock.h>

#include "unit/files/AreaHouse.h"

namespace vireo::test {
namespace {

using ::testing::IsEmpty;

constexpr const char* kRingerItem = "ringer-audio-file";
constexpr LocalMgmtIfc::eFiletype kPicture = LocalMgmtIfc::FILETYPE_PICTURE;
constexpr LocalMgmtIfc::eFiletype kRinger = LocalMgmtIfc::FILETYPE_RINGER;

/// Users who come and go, and what is cleared. What stays in the areas is held to a model, in
/// AreaModelTest.
class ClearedAreasTest : public AreaHouse {
protected:
    /// What the owner of the ringer answers and is told to write.
    struct RingerOwner : TestAgent {
        ManageableData answer;
        Texts written;
        bool accepts = true;
    };
    void serveRinger(RingerOwner& owner) {
        owner.answer.setRootId(kRingerItem, nullptr);
        ASSERT_TRUE(service.getData(owner.answer));
        owner.onGet = [&owner](ManageableData& record) {
            return record.copyDocument(kRingerItem, owner.answer);
        };
        owner.onSet = [&owner](ManageableData& record) {
            owner.written.push_back(record.interogate(kRingerItem)->value());
            return owner.accepts;
        };
        ASSERT_TRUE(service.registerManagementIdentity("MediaMgmtId", &owner, true));
    }
};

TEST_F(ClearedAreasTest, TheRingerInUseIsSwitchedOffOrKept) {
    const struct {
        const char* status;
        const char* file;
        bool accepts;
        Texts written;
        bool isDeleted;
    } rows[] = {
        {"off", "bell", false, {}, true},
        {"on", "other", false, {}, true},
        {"on", "bell", true, {"<status>off</status><identity>a&lt;b</identity>"}, true},
        {"on",
         "bell",
         false,
         {"<status>off</status><identity>a&lt;b</identity>",
          "<status>on</status><volume>7</volume>"},
         false},
    };
    RingerOwner owner;
    serveRinger(owner);
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.status) + ' ' + row.file);
        service.invalidateVCMSCache();
        for (const auto& [part, value] :
             std::map<std::string, std::string>{{"status", row.status},
                                                {"ringer-file", row.file},
                                                {"identity", "a<b"},
                                                {"volume", "7"}}) {
            ASSERT_TRUE(owner.answer.populate(kRingerItem, part, value));
        }
        owner.accepts = row.accepts;
        owner.written.clear();
        ports.forgetLines();
        put("ringtones/bell", "ding");
        EXPECT_EQ(service.deleteFile(kRinger, "bell"), row.isDeleted);
        EXPECT_EQ(exists("ringtones/bell"), !row.isDeleted);
        EXPECT_EQ(owner.written, row.written);
        EXPECT_EQ(ports.count(kLogDebug, "turning ringer off"), row.written.size() == 1 ? 1 : 0);
        EXPECT_EQ(ports.count(kLogError,
                              "Failed to delete ringer file as configured for "
                              "distinctive ringing"),
                  row.isDeleted ? 0 : 1);
    }
    owner.onGet = [](ManageableData&) { return false; };
    service.invalidateVCMSCache();
    put("ringtones/bell", "ding");
    EXPECT_TRUE(service.deleteFile(kRinger, "bell"));
    EXPECT_EQ(ports.count(kLogError, "Get ringer-audio-file failed"), 1);
}

TEST_F(ClearedAreasTest, FiveTypesAreCleanedAndTheMobilityServiceIsNotTold) {
    put("music/kept", "kept");
    for (const int type : {-1, 0, 1, 2, 4, 5, 6, 7, 13, 14, 17, 18, 99}) {
        EXPECT_FALSE(service.cleanupUserData(static_cast<Ifc::eFiletype>(type), Ifc::USER_BASE));
        EXPECT_EQ(ports.count(kLogError, "File type " + std::to_string(type) + " unsupported"), 1);
    }
    for (const int type : {3, 9, 11, 15, 16}) {
        EXPECT_TRUE(service.cleanupUserData(static_cast<Ifc::eFiletype>(type), Ifc::USER_BASE));
    }
    EXPECT_EQ(tree(), (Tree{{"music/kept", "=kept"}}));
    EXPECT_THAT(mobility.notes, IsEmpty());
}

TEST_F(ClearedAreasTest, OfAVisitorWhoGoesTheMobilityServiceIsTold) {
    const struct {
        Ifc::eUsertype from;
        int to;
        bool isTold;
    } rows[] = {{Ifc::USER_VISITOR, Ifc::USER_BASE, true},
                {Ifc::USER_BASE, Ifc::USER_CLEAR_DATA_VISITOR, true},
                {Ifc::USER_BASE, Ifc::USER_CLEAR_DATA_VISITOR_KSP, false},
                {Ifc::USER_BASE, Ifc::USER_VISITOR, false},
                {Ifc::USER_VISITOR_KSP, Ifc::USER_BASE, false},
                {Ifc::USER_VISITOR, 9, false},
                {Ifc::USER_VISITOR, -1, false}};
    for (const auto& row : rows) {
        SCOPED_TRACE(std::to_string(row.from) + " to " + std::to_string(row.to));
        service.changeCurrentUser(Ifc::USER_BASE_KSP);  // from here nothing is cleared
        service.changeCurrentUser(row.from);
        put("visitor/images/own", "x");
        mobility.notes.clear();
        EXPECT_TRUE(service.changeCurrentUser(static_cast<Ifc::eUsertype>(row.to)));
        EXPECT_EQ(mobility.notes, row.isTold ? Texts{"gone "} : Texts()) << "all pictures";
    }
    std::string path;
    service.getFilePathFromType(kPicture, path);
    EXPECT_EQ(path, "visitor/images/") << "other numbers name no user";
}

TEST_F(ClearedAreasTest, AClearedAreaStaysClearedWhateverIsOnItsWay) {
    const struct {
        const char* what;
        std::function<void()> clear;
        bool isCleared = true;
    } rows[] = {
        {"the visitor leaves", [this] { service.changeCurrentUser(Ifc::USER_BASE); }},
        {"a reset", [this] { service.changeCurrentUser(Ifc::USER_CLEAR_DATA_VISITOR); }},
        {"mobile data", [this] { service.clearMobileUserData(); }},
        {"user data", [this] { service.clearAllUserData(); }},
        {"one type", [this] { service.cleanupUserData(kPicture, Ifc::USER_VISITOR); }},
        {"another type", [this] { service.cleanupUserData(kRinger, Ifc::USER_VISITOR); }, false},
        {"another user", [this] { service.cleanupUserData(kPicture, Ifc::USER_BASE); }, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        service.changeCurrentUser(Ifc::USER_CLEAR_DATA_VISITOR);
        ASSERT_TRUE(startFrom(kPicture));
        row.clear();
        transfer.complete("f");
        EXPECT_EQ(exists("visitor/images/f"), !row.isCleared);
        EXPECT_EQ(get("dl-pic-last-status"), row.isCleared ? "2" : "1");
    }
}

TEST_F(ClearedAreasTest, MigrationCopiesContentsAndLeavesTheDefaultsAlone) {
    const std::string large(200'000, 'l');
    deploy("images/a", "default");
    link("/Vireo_Deploy/images/a", "images/a");
    put("images/own", large);
    put("voice_recog_patterns/hello", large);  // one directory for both users
    link("/nowhere", "phd/dangling");
    put("phd/kept", "phd");
    link("/Vireo_Deploy/images/a", "visitor/images/own");
    service.changeCurrentUser(Ifc::USER_BASE);
    EXPECT_TRUE(service.changeCurrentUser(Ifc::USER_MIGRATE_TO_VISITOR));
    EXPECT_EQ(tree(), (Tree{{"images/a", ">/Vireo_Deploy/images/a"},
                            {"images/own", "=" + large},
                            {"voice_recog_patterns/hello", "=" + large},
                            {"phd/dangling", ">/nowhere"},
                            {"phd/kept", "=phd"},
                            {"visitor/images/a", "=default"},
                            {"visitor/images/own", "=" + large},
                            {"visitor/phd/kept", "=phd"}}));
    std::string text;
    std::getline(std::ifstream(deployed("images/a")), text);
    EXPECT_EQ(text, "default");
}

}  // namespace
}  // namespace vireo::test
