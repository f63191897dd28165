#include <gmock/gmock.h>

#include "support/OwnMounts.h"
#include "unit/files/AreaHouse.h"

namespace vireo::test {
namespace {

using ::testing::IsEmpty;
using UserFileAreasTest = AreaHouse;

constexpr LocalMgmtIfc::eFiletype kPicture = LocalMgmtIfc::FILETYPE_PICTURE;
constexpr LocalMgmtIfc::eFiletype kScreensaver = LocalMgmtIfc::FILETYPE_SCREENSAVER;

// What becomes of a default with random changes of every kind is held to a model, in AreaModelTest.
TEST_F(UserFileAreasTest, ListingSettlesEveryDefault) {
    const struct {
        const char* what;
        Tree before;
        Tree after;  ///< on a phone of any software
    } rows[] = {
        {"missing: a tombstone, no link", {}, {{"deleted/images/a", ">/Vireo_Deploy/images/a"}}},
        {"linked and deleted: linked",
         {{"images/a", ">/Vireo_Deploy/images/a"}, {"deleted/images/a", ">/Vireo_Deploy/images/a"}},
         {{"images/a", ">/Vireo_Deploy/images/a"}}},
        {"an identical file: a link",
         {{"images/a", "=default"}},
         {{"images/a", ">/Vireo_Deploy/images/a"}}},
        {"an identical file of a deleted one: kept",
         {{"images/a", "=default"}, {"deleted/images/a", ">/Vireo_Deploy/images/a"}},
         {{"images/a", "=default"}, {"deleted/images/a", ">/Vireo_Deploy/images/a"}}},
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
    for (const bool isThere : {true, false}) {
        EXPECT_EQ(service.deleteFile(kPicture, "a"), isThere);
        EXPECT_EQ(service.deleteFile(kPicture, "own"), isThere);
        EXPECT_EQ(tree(), (Tree{{"deleted/images/a", ">/Vireo_Deploy/images/a"}}));
        EXPECT_EQ(mobility.notes, Texts{"gone own"}) << "of a file that goes alone";
    }
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

}  // namespace
}  // namespace vireo::test
