#include <gmock/gmock.h>
#include <sys/stat.h>

#include <thread>

#include "files/FirstLinks.h"
#include "unit/platform/FileStorageFixture.h"

namespace vireo::test {
namespace {

using ::testing::HasSubstr;

TEST_F(FileStorageTest, PathsBecomeAbsoluteBelowTheRoot) {
    const struct {
        const char* given;
        const char* absolute;  ///< below the storage root
        const char* made;      ///< the directory that is there then
    } rows[] = {
        {"", "", ""},
        {"images/", "images/", "images"},
        {"visitor/images/a.jpg", "visitor/images/a.jpg", "visitor/images"},
        {"file", "file", ""},
        {"./twice//slash/./", "twice/slash/", "twice/slash"},
        {"dots/.", "dots/", "dots"},
        {"dots/...", "dots/...", "dots"},
        {"blank and \xc3\xa4/\n", "blank and \xc3\xa4/\n", "blank and \xc3\xa4"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.given);
        const std::string absolute = initialised(row.given);
        EXPECT_EQ(absolute, below(row.absolute));
        EXPECT_EQ(initialised(absolute), absolute) << "the second time";
        EXPECT_TRUE(std::filesystem::is_directory(below(row.made)));
        if (!absolute.ends_with('/')) {
            EXPECT_FALSE(std::filesystem::exists(absolute));
        }
    }
    struct stat status {};
    for (const char* made : {"/data", "/data/vireo", "/data/vireo/visitor/images"}) {
        ASSERT_EQ(::stat((m_root + made).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777U, 0700U) << made;
    }
}

TEST_F(FileStorageTest, PathsThatLeadOutOfTheRootAreRefused) {
    using namespace std::string_literals;
    const struct {
        std::string path;
        const char* reason;
    } rows[] = {
        {"..", "\"..\" may lead anywhere"},
        {"images/../../../x/", "may lead anywhere"},
        {below("images/../a"), "may lead anywhere"},
        {"/etc/", "cannot use \"/etc/\": it does not lie below "},
        {"/", "does not lie below"},
        {m_root + "/data/das/", "does not lie below"},
        {m_root + "/data/vireo", "does not lie below"},
        {m_root + "/data/vireo2/x", "does not lie below"},
        {"a\0b/"s, "/a\\0b/\": there is a NUL byte in it"},
        {std::string(300, 'n') + '/', "File name too long"},
    };
    for (const auto& row : rows) {
        EXPECT_THAT(refusal(row.path), HasSubstr(row.reason)) << row.path;
    }
    // For the rest such a path is one of the phone.
    write(m_directory.file("outside"), "alive");
    EXPECT_THAT(errorOf([&] { m_storage.deleteFile(m_directory.file("outside")); }),
                HasSubstr("cannot use \"" + m_root + '/'));
    EXPECT_EQ(read(m_directory.file("outside")), "alive");
}

TEST_F(FileStorageTest, NoLinkLeadsOutside) {
    const std::string outside = m_directory.file("outside");
    write(outside + "/canary", "alive");
    std::filesystem::create_directories(below("own"));
    write(below("own/mine"));
    std::filesystem::create_directory_symlink(outside, below("images"));
    std::filesystem::create_directory_symlink("own", below("inside"));

    const std::string canary = below("images/canary");
    for (const std::string& error :
         {refusal("images/"), refusal("images/new/"), refusal("images/new/file"),
          refusal("inside/new"), errorOf([&] { m_storage.list(below("images")); }),
          errorOf([&] { m_storage.deleteFile(canary); }),
          errorOf([&] { m_storage.fileSize(canary); }),
          errorOf([&] { m_storage.renameFile(canary, below("stolen")); }),
          errorOf([&] { m_storage.createSymlink("/x", below("images/new")); }),
          errorOf([&] { m_storage.replaceBySymlink("/x", canary); }),
          errorOf([&] { m_storage.copyFile(below("own/mine"), canary); }),
          errorOf([&] { m_storage.copyFile(canary, below("own/mine")); }),
          errorOf([&] { m_storage.renameFile(below("own/mine"), canary); })}) {
        EXPECT_THAT(error, HasSubstr("something else than a directory"));
    }
    EXPECT_EQ(read(outside + "/canary"), "alive");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(outside), {}), 1);
    EXPECT_TRUE(std::filesystem::exists(below("own/mine")));
}

TEST_F(FileStorageTest, ARootBehindALinkIsTheRoot) {
    const std::string link = m_directory.file("link");
    std::filesystem::create_directory_symlink(m_root, link);
    FileStorage storage(link, "data/vireo");
    std::string path = "images/";
    storage.initStorageLocation(path);
    EXPECT_EQ(path, link + "/data/vireo/images/");
    EXPECT_TRUE(std::filesystem::is_directory(below("images")));
}

TEST_F(FileStorageTest, SizesAreThoseOfFilesAlone) {
    write(below("big"), std::string(300'001, 'b'));
    write(below("empty"), "");
    write(m_root + "/Defaults/bell", "ding");
    std::filesystem::create_symlink(m_root + "/Defaults/bell", below("bell"));
    std::filesystem::create_symlink("nowhere", below("dangling"));
    std::filesystem::create_directory(below("directory"));
    EXPECT_EQ(m_storage.fileSize(below("big")), 300'001U);
    EXPECT_EQ(m_storage.fileSize(below("empty")), 0U);
    EXPECT_EQ(m_storage.fileSize(below("bell")), 4U);
    const struct {
        const char* name;
        const char* reason;
    } rows[] = {
        {"missing", "No such file or directory"},
        {"no/directory", "No such file or directory"},
        {"dangling", "No such file or directory"},
        {"directory", "it is no file"},
        {"directory/", "it is the name of a directory"},
    };
    for (const auto& row : rows) {
        const std::string error = errorOf([&] { m_storage.fileSize(below(row.name)); });
        EXPECT_THAT(error, HasSubstr(row.reason)) << row.name;
        EXPECT_THAT(error, HasSubstr('"' + m_root)) << row.name;
    }
}

TEST_F(FileStorageTest, AListIsSortedAndLeavesOutWhatIsHidden) {
    for (const char* name : {"b", "a", "B", "\xc3\xa4", ".receiving", "a b"}) {
        write(below(std::string("images/") + name));
    }
    std::filesystem::create_symlink("a", below("images/link"));
    std::filesystem::create_symlink("nowhere", below("images/dangling"));
    std::filesystem::create_directory(below("images/directory"));
    ASSERT_EQ(::mkfifo(below("images/pipe").c_str(), 0600), 0);
    const std::vector<std::string> expected{"B file",    "a file",        "a b file",
                                            "b file",    "dangling link", "directory directory",
                                            "link link", "pipe other",    "\xc3\xa4 file"};
    EXPECT_EQ(names(below("images/")), expected);
    EXPECT_EQ(names(below("images")), expected) << "without the slash";
    EXPECT_THAT(errorOf([&] { m_storage.list(below("missing")); }), HasSubstr("No such file"));
    EXPECT_NE(errorOf([&] { m_storage.list(below("images/a")); }), "");
}

TEST_F(FileStorageTest, FirstLinksAreMadeForWhatIsNeitherThereNorDeleted) {
    for (const char* name :
         {"music/waltz", "images/linked", "images/own", "images/deleted", "images/new",
          "ringtones/bell", "screensavers/stars", "logos/mark", "images/.hidden"}) {
        write(m_root + "/Vireo_Deploy/" + name, "default");
    }
    write(below("images/own"), "own");
    std::filesystem::create_directories(below("deleted/images"));
    std::filesystem::create_symlink(m_root + "/Vireo_Deploy/images/linked", below("images/linked"));
    std::filesystem::create_symlink("anything", below("deleted/images/deleted"));
    const std::vector<std::string> images{"linked link", "new link", "own file"};
    for (int start = 0; start < 2; ++start) {
        FirstLinks::make(m_storage);
        EXPECT_EQ(names(below("images")), images);
        EXPECT_EQ(names(below("music")), std::vector<std::string>{"waltz link"});
        EXPECT_EQ(names(below("ringtones")), std::vector<std::string>{"bell link"});
        EXPECT_EQ(names(below("screensavers")), std::vector<std::string>{"stars link"});
        EXPECT_FALSE(std::filesystem::exists(below("logos"))) << "they have no defaults";
    }
    EXPECT_EQ(read(below("images/new")), "default");
    EXPECT_EQ(read(below("images/own")), "own");
}

TEST_F(FileStorageTest, SeveralThreadsMakeTheSameDirectories) {
    std::vector<std::thread> threads;
    std::vector<std::string> errors(4);
    for (std::string& error : errors) {
        threads.emplace_back([this, &error] {
            for (int i = 0; i < 50 && error.empty(); ++i) {
                error = errorOf([&] { initialised("some/" + std::to_string(i) + "/deep/"); });
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(errors, std::vector<std::string>(4));
    EXPECT_EQ(m_storage.list(below("some")).size(), 50U);
}

}  // namespace
}  // namespace vireo::test
