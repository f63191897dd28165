#include <gmock/gmock.h>

#include "device/MemoryInfo.h"
#include "support/OwnMounts.h"
#include "unit/files/AreaHouse.h"

namespace vireo::test {
namespace {

using ::testing::IsEmpty;

constexpr const char* kRingerItem = "ringer-audio-file";
constexpr LocalMgmtIfc::eFiletype kPicture = LocalMgmtIfc::FILETYPE_PICTURE;
constexpr LocalMgmtIfc::eFiletype kRinger = LocalMgmtIfc::FILETYPE_RINGER;
constexpr LocalMgmtIfc::eFiletype kScreensaver = LocalMgmtIfc::FILETYPE_SCREENSAVER;

class UserFileAreasTest : public AreaHouse {
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

TEST_F(UserFileAreasTest, ListingSettlesEveryDefault) {
    const struct {
        const char* what;
        Tree before;
        Tree after;  ///< on a phone of any software
    } rows[] = {
        {"missing: a tombstone, no link", {}, {{"deleted/images/a", ">/Vireo_Deploy/images/a"}}},
        {"linked: nothing",
         {{"images/a", ">/Vireo_Deploy/images/a"}},
         {{"images/a", ">/Vireo_Deploy/images/a"}}},
        {"deleted: nothing",
         {{"deleted/images/a", ">/Vireo_Deploy/images/a"}},
         {{"deleted/images/a", ">/Vireo_Deploy/images/a"}}},
        {"linked and deleted: linked",
         {{"images/a", ">/Vireo_Deploy/images/a"}, {"deleted/images/a", ">/Vireo_Deploy/images/a"}},
         {{"images/a", ">/Vireo_Deploy/images/a"}}},
        {"an identical file: a link",
         {{"images/a", "=default"}},
         {{"images/a", ">/Vireo_Deploy/images/a"}}},
        {"a differing file: kept", {{"images/a", "=own"}}, {{"images/a", "=own"}}},
        {"an identical file of a deleted one: kept",
         {{"images/a", "=default"}, {"deleted/images/a", ">/Vireo_Deploy/images/a"}},
         {{"images/a", "=default"}, {"deleted/images/a", ">/Vireo_Deploy/images/a"}}},
        {"a tombstone without default: removed",
         {{"images/a", ">/Vireo_Deploy/images/a"}, {"deleted/images/x", ">/Vireo_Deploy/images/x"}},
         {{"images/a", ">/Vireo_Deploy/images/a"}}},
        {"a file among the deleted: left alone",
         {{"images/a", ">/Vireo_Deploy/images/a"}, {"deleted/images/x", "=x"}},
         {{"images/a", ">/Vireo_Deploy/images/a"}, {"deleted/images/x", "=x"}}},
    };
    for (const auto& row : rows) {
        for (const std::string area : {"", "visitor/"}) {
            SCOPED_TRACE(row.what + (" in " + area));
            std::filesystem::remove_all(stored(""));
            deploy("images/a");
            std::filesystem::create_directories(deployed("images/folder"));
            write(deployed("images/.hidden"), "default");
            Tree expected;
            for (const auto& [path, content] : row.before) {
                content[0] == '>' ? link(content.substr(1), area + path)
                                  : put(area + path, content.substr(1));
            }
            for (const auto& [path, content] : row.after) {
                expected[area + path] = content;
            }
            list(kPicture, area.empty() ? Ifc::USER_BASE : Ifc::USER_VISITOR);
            EXPECT_EQ(tree(), expected);
            list(kPicture, area.empty() ? Ifc::USER_BASE : Ifc::USER_VISITOR);
            EXPECT_EQ(tree(), expected) << "the second time";
        }
    }
}

TEST_F(UserFileAreasTest, OnlySoftwareOfTypeOneChecksTheLinksOfTheUser) {
    for (const bool isSip : {true, false}) {
        VireoClientMgmt other;  // the type is asked for once
        other.init(context);
        ManageableData type;
        ASSERT_TRUE(type.populate("software-type", isSip ? "Varnick SIP" : "Varnick KSP"));
        ASSERT_TRUE(other.setData(type));
        deploy("images/a", "default");
        put("other", "other");
        link("/Vireo_Deploy/images/gone", "images/gone");
        link("/files/other", "images/a");
        std::list<std::string> files;
        EXPECT_TRUE(other.getListOfFilesOfType(kPicture, &files, Ifc::USER_BASE));
        const Tree expected =
            isSip ? Tree{{"images/a", ">/Vireo_Deploy/images/a"}, {"other", "=other"}}
                  : Tree{{"images/a", ">/files/other"},
                         {"images/gone", ">/Vireo_Deploy/images/gone"},
                         {"other", "=other"}};
        EXPECT_EQ(tree(), expected);
    }
}

TEST_F(UserFileAreasTest, AFileThatIsReceivedDuringAListOrADeletionIsKept) {
    const struct {
        const char* what;
        const char* before;
        bool isDeletion = false;
    } rows[] = {
        {"an identical file", "=default"},
        {"a link that leads elsewhere", ">/files/other"},
        {"a link without default", ">/Vireo_Deploy/images/gone"},
        {"a default that is being deleted", ">/Vireo_Deploy/images/a", true},
    };
    deploy("images/a", "default");
    put("other", "other");
    int count = 0;
    failing.meanwhile = [&](const std::string& path) {
        ++count;
        write(path, "received");
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const std::string text = row.before;
        const std::string path = text.ends_with("gone") ? "images/gone" : "images/a";
        text[0] == '>' ? link(text.substr(1), path) : put(path, text.substr(1));
        ports.forgetLines();
        count = 0;
        if (row.isDeletion) {
            EXPECT_FALSE(service.deleteFile(kPicture, "a"));
        } else {
            list(kPicture, Ifc::USER_BASE);
        }
        EXPECT_EQ(count, 1);
        EXPECT_EQ(tree()[path], "=received");
        EXPECT_EQ(tree().count("deleted/images/a"), 0U);
        EXPECT_EQ(ports.count(kLogError, stored(path)), 1) << "it is said why";
    }
}

TEST_F(UserFileAreasTest, AListHoldsFullPathsInOrderAndNothingElse) {
    for (const char* name : {"b", "a", "B", "a b", "\xc3\xa4", "<&\">"}) {
        put(std::string("logos/") + name, "x");
    }
    std::filesystem::create_directory(stored("logos/folder"));
    link("/nowhere", "logos/link");
    put("logos/.hidden", "x");
    EXPECT_EQ(list(Ifc::FILETYPE_LOGO, Ifc::USER_BASE),
              (Texts{"<&\">", "B", "a", "a b", "b", "link", "\xc3\xa4"}));
    put("image.bin", "software");
    EXPECT_EQ(list(Ifc::FILETYPE_SOFTWARE, Ifc::USER_UNSET), Texts{"image.bin"});
    EXPECT_THAT(list(Ifc::FILETYPE_LDAP, Ifc::USER_VISITOR), IsEmpty());
    EXPECT_TRUE(std::filesystem::is_directory(stored("visitor/ldap")));
    EXPECT_FALSE(std::filesystem::exists(stored("visitor/deleted"))) << "it has no defaults";

    std::list<std::string> files;
    for (const int type : {-1, 0, 8, 10, 12, 19, 255}) {
        files.assign({"old"});
        EXPECT_FALSE(service.getListOfFilesOfType(static_cast<Ifc::eFiletype>(type), &files));
        EXPECT_THAT(files, IsEmpty());
        EXPECT_EQ(ports.count(kLogError, "File type " + std::to_string(type) + " unsupported"), 1);
    }
    service.changeCurrentUser(Ifc::USER_VISITOR);
    put("visitor/images/mine", "x");
    EXPECT_TRUE(service.getListOfFilesOfType(kPicture, &files));
    EXPECT_EQ(files, std::list<std::string>{stored("visitor/images/mine")});
}

TEST_F(UserFileAreasTest, ADeletedDefaultBecomesATombstoneAndAFileGoes) {
    deploy("images/a");
    link("/Vireo_Deploy/images/a", "images/a");
    put("images/own", "x");
    EXPECT_TRUE(service.deleteFile(kPicture, "a"));
    EXPECT_TRUE(service.deleteFile(kPicture, "own"));
    EXPECT_EQ(tree(), (Tree{{"deleted/images/a", ">/Vireo_Deploy/images/a"}}));
    EXPECT_THAT(list(kPicture, Ifc::USER_BASE), IsEmpty());
    EXPECT_EQ(mobility.notes, Texts{"gone own"}) << "of a file alone";
    EXPECT_FALSE(service.deleteFile(kPicture, "a"));
    EXPECT_FALSE(service.deleteFile(kPicture, "own"));
    EXPECT_EQ(mobility.notes.size(), 1U);
    EXPECT_TRUE(std::filesystem::exists(deployed("images/a")));

    service.changeCurrentUser(Ifc::USER_VISITOR_KSP);
    link("/Vireo_Deploy/images/a", "visitor/images/a");
    EXPECT_TRUE(service.deleteFile(kPicture, "a"));
    EXPECT_EQ(tree()["visitor/deleted/images/a"], ">/Vireo_Deploy/images/a");
}

TEST_F(UserFileAreasTest, TypesWithoutDeletionMeanTheAreaItself) {
    for (const int type : {13, 14, 18, 255, -1}) {
        put("x", "x");
        put("help/x", "x");
        EXPECT_TRUE(service.deleteFile(static_cast<Ifc::eFiletype>(type), "x")) << type;
        EXPECT_EQ(tree(), (Tree{{"help/x", "=x"}}));
        EXPECT_EQ(ports.count(kLogWarning, "No deletion for file type " + std::to_string(type)), 1);
    }
    for (const int type : {0, 8, 10, 12}) {
        EXPECT_FALSE(service.deleteFile(static_cast<Ifc::eFiletype>(type), "x"));
    }
    EXPECT_EQ(ports.count(kLogWarning, "No deletion"), 5);
}

TEST_F(UserFileAreasTest, NoNameAndNoLinkLeadsOutside) {
    using namespace std::string_literals;
    const std::string outside = directory.file("outside");
    write(outside + "/canary", "alive");
    write(directory.file("canary"), "alive");
    put("images/kept", "kept");
    put("canary", "alive");
    std::filesystem::create_symlink(outside + "/canary", stored("images/hostile"));
    std::filesystem::create_directory_symlink(outside, stored("images/folder"));
    const Tree before = tree();
    const Tree::size_type count = before.size();
    for (const std::string& name :
         {""s, "."s, ".."s, "../canary"s, "/canary"s, "a/b"s, "folder/canary"s, "a\0b"s, "\n"s,
          directory.file("canary"), "../../canary"s}) {
        for (const int type : {-1, 0, 1, 3, 8, 11, 12, 14, 255}) {
            EXPECT_FALSE(service.deleteFile(static_cast<Ifc::eFiletype>(type), name)) << name;
        }
    }
    EXPECT_EQ(tree(), before);
    EXPECT_TRUE(service.deleteFile(kPicture, "hostile"));
    EXPECT_TRUE(service.deleteFile(kPicture, "folder"));
    EXPECT_EQ(list(kPicture, Ifc::USER_BASE), Texts{"kept"});
    EXPECT_EQ(tree().size(), count - 2);

    // Whole areas that are links.
    for (const char* area : {"visitor", "deleted", "screensavers"}) {
        std::filesystem::remove_all(stored(area));
        std::filesystem::create_directory_symlink(outside, stored(area));
    }
    deploy("images/a");
    deploy("screensavers/a");
    for (const Ifc::eFiletype type : {kPicture, kScreensaver}) {
        std::list<std::string> files;
        service.getListOfFilesOfType(type, &files, Ifc::USER_BASE);
        service.getListOfFilesOfType(type, &files, Ifc::USER_VISITOR);
        service.cleanupUserData(type, Ifc::USER_VISITOR);
        service.cleanupUserData(type, Ifc::USER_BASE);
    }
    for (int user = -1; user < 10; ++user) {
        service.changeCurrentUser(static_cast<Ifc::eUsertype>(user));
        service.deleteFile(kPicture, "canary");
    }
    service.clearMobileUserData();
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(outside), {}), 1);
    for (const std::string& canary : {outside + "/canary", directory.file("canary")}) {
        std::string text;
        std::getline(std::ifstream(canary), text);
        EXPECT_EQ(text, "alive") << canary;
    }
}

TEST_F(UserFileAreasTest, TheRingerInUseIsSwitchedOffOrKept) {
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

TEST_F(UserFileAreasTest, CleaningGivesBackTheDefaultsThatTheUserMayHave) {
    const auto defaultsIn = [](const std::string& area) {
        return Tree{
            {area + "a", ">/Vireo_Deploy/" + area.substr(area.find('/') == 7 ? 8 : 0) + "a"}};
    };
    const struct {
        Ifc::eFiletype type;
        Ifc::eUsertype user;
        const char* area;
        bool hasDefaults;
    } rows[] = {
        {kPicture, Ifc::USER_BASE, "images/", true},
        {kScreensaver, Ifc::USER_BASE, "screensavers/", true},
        {kRinger, Ifc::USER_BASE_KSP, "ringtones/", true},
        {Ifc::FILETYPE_JAD, Ifc::USER_UNSET, "jad/", true},
        {Ifc::FILETYPE_PHD, Ifc::USER_BASE, "phd/", true},
        {kPicture, Ifc::USER_VISITOR, "visitor/images/", true},
        {kScreensaver, Ifc::USER_VISITOR, "visitor/screensavers/", false},
        {kRinger, Ifc::USER_VISITOR, "visitor/ringtones/", false},
        {Ifc::FILETYPE_JAD, Ifc::USER_VISITOR, "visitor/jad/", true},
        {kPicture, Ifc::USER_VISITOR_KSP, "visitor/images/", false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.area);
        std::filesystem::remove_all(stored(""));
        deploy(std::string(row.area).substr(std::string(row.area).find('/') == 7 ? 8 : 0) + "a");
        put(row.area + std::string("own"), "x");
        link("/nowhere", row.area + std::string("b"));
        put("music/kept", "kept");
        EXPECT_TRUE(service.cleanupUserData(row.type, row.user));
        Tree expected = row.hasDefaults ? defaultsIn(row.area) : Tree{};
        expected["music/kept"] = "=kept";
        EXPECT_EQ(tree(), expected);
    }
    for (const int type : {-1, 0, 1, 2, 4, 5, 6, 7, 13, 14, 17, 18, 99}) {
        EXPECT_FALSE(service.cleanupUserData(static_cast<Ifc::eFiletype>(type), Ifc::USER_BASE));
        EXPECT_EQ(ports.count(kLogError, "File type " + std::to_string(type) + " unsupported"), 1);
    }
    EXPECT_TRUE(exists("music/kept"));
    EXPECT_THAT(mobility.notes, IsEmpty());
}

TEST_F(UserFileAreasTest, TheKspVisitorSeesWhatThePhonesUserHas) {
    deploy("ringtones/a");
    link("/Vireo_Deploy/ringtones/a", "ringtones/a");
    put("ringtones/own", "own");
    put("visitor/ringtones/old", "x");
    EXPECT_TRUE(service.cleanupUserData(kRinger, Ifc::USER_VISITOR_KSP));
    EXPECT_EQ(tree()["visitor/ringtones/a"], ">/files/ringtones/a");
    EXPECT_EQ(tree()["visitor/ringtones/own"], ">/files/ringtones/own");
    EXPECT_FALSE(exists("visitor/ringtones/old"));
    std::string text;
    std::getline(std::ifstream(stored("visitor/ringtones/a")), text);
    EXPECT_EQ(text, "default") << "no link dangles";
}

/// Every switch from every user: who is current then, and what becomes of the areas.
TEST_F(UserFileAreasTest, SwitchingUsersFillsAndClearsTheVisitorsArea) {
    const auto currentArea = [this] {
        std::string path;
        service.getFilePathFromType(kPicture, path);
        std::string ldap;
        service.getFilePathFromType(Ifc::FILETYPE_LDAP, ldap);
        return path + ' ' + ldap;
    };
    const std::string base = "images/ ldap/";
    const std::string visitor = "visitor/images/ visitor/ldap/";
    const std::string visitorKsp = "visitor/images/ ldap/";
    const struct {
        Ifc::eUsertype from;
        int to;
        std::string area;
        bool isPictureKept;  ///< the visitor's own
        bool isLdapKept;
        bool isTombstoneKept;  ///< of the visitor's
        bool hasRingers;       ///< the visitor's links to the defaults
    } rows[] = {
        {Ifc::USER_UNSET, Ifc::USER_BASE, base, true, true, true, false},
        {Ifc::USER_VISITOR, Ifc::USER_BASE, base, false, true, false, false},
        {Ifc::USER_VISITOR_KSP, Ifc::USER_BASE, base, true, true, true, false},
        {Ifc::USER_UNSET, Ifc::USER_VISITOR, visitor, true, true, true, false},
        {Ifc::USER_BASE, Ifc::USER_VISITOR, visitor, false, true, false, true},
        {Ifc::USER_VISITOR, Ifc::USER_VISITOR, visitor, true, true, true, false},
        {Ifc::USER_UNSET, Ifc::USER_MIGRATE_TO_VISITOR, visitor, true, true, true, false},
        {Ifc::USER_BASE, Ifc::USER_CLEAR_DATA_VISITOR, visitor, false, true, false, false},
        {Ifc::USER_UNSET, Ifc::USER_BASE_KSP, base, true, true, true, false},
        {Ifc::USER_VISITOR, Ifc::USER_BASE_KSP, base, true, true, true, false},
        {Ifc::USER_BASE, Ifc::USER_VISITOR_KSP, visitorKsp, true, true, true, false},
        {Ifc::USER_BASE, Ifc::USER_CLEAR_DATA_VISITOR_KSP, visitorKsp, false, true, false, true},
        {Ifc::USER_VISITOR, Ifc::USER_DEFAULT, visitor, true, true, true, false},
        {Ifc::USER_VISITOR, Ifc::USER_UNSET, visitor, true, true, true, false},
        {Ifc::USER_VISITOR, 9, visitor, true, true, true, false},
        {Ifc::USER_VISITOR, -1, visitor, true, true, true, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::to_string(row.from) + " to " + std::to_string(row.to));
        VireoClientMgmt fresh;
        fresh.init(context);
        fresh.changeCurrentUser(row.from);
        std::filesystem::remove_all(stored(""));
        deploy("ringtones/a");
        link("/Vireo_Deploy/ringtones/a", "ringtones/a");
        put("visitor/images/own", "x");
        put("visitor/ldap/own", "x");
        link("/Vireo_Deploy/images/a", "visitor/deleted/images/a");
        put("images/base", "x");
        EXPECT_TRUE(fresh.changeCurrentUser(static_cast<Ifc::eUsertype>(row.to)));
        std::string path;
        std::string ldap;
        fresh.getFilePathFromType(kPicture, path);
        fresh.getFilePathFromType(Ifc::FILETYPE_LDAP, ldap);
        EXPECT_EQ(path + ' ' + ldap, row.area);
        Tree found = tree();
        EXPECT_EQ(found.count("visitor/images/own") > 0, row.isPictureKept);
        EXPECT_EQ(found.count("visitor/ldap/own") > 0, row.isLdapKept);
        EXPECT_EQ(found.count("visitor/deleted/images/a") > 0, row.isTombstoneKept);
        EXPECT_EQ(found.count("visitor/ringtones/a") > 0, row.hasRingers);
        EXPECT_EQ(found["images/base"], "=x");
        EXPECT_EQ(found["ringtones/a"], ">/Vireo_Deploy/ringtones/a");
    }
    EXPECT_EQ(currentArea(), base);
    EXPECT_EQ(mobility.notes, (Texts{"gone ", "gone "})) << "the visitor's pictures, all of them";
}

TEST_F(UserFileAreasTest, AClearedAreaStaysClearedWhateverIsOnItsWay) {
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

TEST_F(UserFileAreasTest, MigrationCopiesContentsAndLeavesTheDefaultsAlone) {
    const std::string large(200'000, 'l');
    deploy("images/a", "default");
    link("/Vireo_Deploy/images/a", "images/a");
    put("images/own", large);
    put("ldap/template", "ldap");
    put("voice_recog_playbacks/hello", "hello");
    put("voice_recog_patterns/hello", large);
    put("music/stays", "music");
    link("/nowhere", "phd/dangling");
    put("phd/kept", "phd");
    link("/Vireo_Deploy/images/a", "visitor/images/own");
    service.changeCurrentUser(Ifc::USER_BASE);
    EXPECT_TRUE(service.changeCurrentUser(Ifc::USER_MIGRATE_TO_VISITOR));
    Tree expected{{"images/a", ">/Vireo_Deploy/images/a"},
                  {"images/own", "=" + large},
                  {"ldap/template", "=ldap"},
                  {"voice_recog_playbacks/hello", "=hello"},
                  {"voice_recog_patterns/hello", "=" + large},
                  {"music/stays", "=music"},
                  {"phd/dangling", ">/nowhere"},
                  {"phd/kept", "=phd"},
                  {"visitor/images/a", "=default"},
                  {"visitor/images/own", "=" + large},
                  {"visitor/ldap/template", "=ldap"},
                  {"visitor/phd/kept", "=phd"}};
    EXPECT_EQ(tree(), expected);
    EXPECT_EQ(list(kPicture, Ifc::USER_VISITOR), (Texts{"a", "own"}));
    expected["visitor/images/a"] = ">/Vireo_Deploy/images/a";
    EXPECT_EQ(tree(), expected);
    std::string text;
    std::getline(std::ifstream(deployed("images/a")), text);
    EXPECT_EQ(text, "default");

    EXPECT_TRUE(service.changeCurrentUser(Ifc::USER_BASE));
    EXPECT_FALSE(exists("visitor/images/own"));
    EXPECT_EQ(tree()["visitor/images/a"], ">/Vireo_Deploy/images/a");
    EXPECT_EQ(tree()["images/own"], "=" + large);
    EXPECT_EQ(tree()["voice_recog_patterns/hello"], "=" + large);
}

TEST_F(UserFileAreasTest, AFullDiskLosesNoFile) {
    if (!OwnMounts::arePossible()) {
        GTEST_SKIP() << "no mount namespaces here";
    }
    std::filesystem::create_directories(stored(""));
    EXPECT_TRUE(OwnMounts::run([this] {
        if (!OwnMounts::mountDisk(stored(""), 64)) {
            return false;
        }
        for (const char* name : {"a", "b", "c"}) {
            deploy(std::string("images/") + name);
        }
        put("images/a", "default");
        put("images/own", "own");
        list(kPicture, Ifc::USER_VISITOR);  // its directories take room, too
        std::filesystem::remove_all(stored("deleted"));
        std::filesystem::create_directories(stored("deleted/images"));
        for (int i = 0; i < 100 && !::testing::Test::HasFailure(); ++i) {
            std::ofstream(stored("ballast-" + std::to_string(i))) << i;
        }
        list(kPicture, Ifc::USER_BASE);
        Tree found = tree();
        const bool isKept = found["images/a"] == "=default" && found["images/own"] == "=own" &&
                            found.count("deleted/images/b") == 0;
        std::filesystem::remove(stored("ballast-1"));
        std::filesystem::remove(stored("ballast-2"));
        std::filesystem::remove(stored("ballast-3"));
        list(kPicture, Ifc::USER_BASE);
        found = tree();
        return isKept && found["images/a"] == ">/Vireo_Deploy/images/a" &&
               found["images/own"] == "=own" && found.count("deleted/images/b") == 1 &&
               found.count("deleted/images/c") == 1;
    }));
}

TEST_F(UserFileAreasTest, NamesAndRoomOfTheStorage) {
    std::string id = "old";
    std::string name = "old";
    EXPECT_TRUE(service.getIDAndDisplayName(id, name));
    EXPECT_EQ(id, "/files/");
    MemoryInfo info;
    EXPECT_TRUE(service.getUserDataSpaceInfo(info));
    EXPECT_GT(info.totalBytes(), 0U);
    EXPECT_LE(info.freeBytes(), info.totalBytes());
    MemoryInfo read;
    EXPECT_TRUE(read.deserialize(info.serialize()));
    EXPECT_EQ(read.totalBytes(), info.totalBytes());
    for (const char* text : {"", "1;1", "1;x1;1", "1;1", "1;11;12;", "2;-11;1"}) {
        EXPECT_FALSE(read.deserialize(text)) << text;
    }
    EXPECT_EQ(read.freeBytes(), info.freeBytes());

    failing.failAt(1);
    id = "old";
    EXPECT_TRUE(service.getIDAndDisplayName(id, name));
    EXPECT_EQ(id, "old");
    failing.failAt(1);
    EXPECT_FALSE(service.getUserDataSpaceInfo(info));
}

}  // namespace
}  // namespace vireo::test
