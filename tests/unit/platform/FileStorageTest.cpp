#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "files/FileStorage.h"
#include "files/FirstLinks.h"
#include "files/PartialName.h"
#include "support/FullDisk.h"
#include "support/OwnMounts.h"
#include "support/TemporaryDirectory.h"

namespace vireo::test {
namespace {

using ::testing::HasSubstr;

class FileStorageTest : public ::testing::Test {
protected:
    /// What the call threw; empty when it did not.
    template <class Call>
    static std::string errorOf(Call call) {
        try {
            call();
            return {};
        } catch (const StorageError& error) {
            return error.what();
        }
    }
    std::string initialised(std::string path) {
        m_storage.initStorageLocation(path);
        return path;
    }
    std::string refusal(std::string path) {
        const std::string before = path;
        const std::string error = errorOf([&] { m_storage.initStorageLocation(path); });
        EXPECT_EQ(path, before) << "changed although it was refused";
        return error;
    }
    std::string below(const std::string& name) const { return m_root + "/data/vireo/" + name; }
    static void write(const std::string& path, const std::string& content = "x") {
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        std::ofstream(path, std::ios::binary) << content;
    }
    static std::string read(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    std::vector<std::string> names(const std::string& directory) {
        static constexpr const char* kKinds[] = {"file", "link", "directory", "other"};
        std::vector<std::string> all;
        for (const StorageEntry& entry : m_storage.list(directory)) {
            all.push_back(entry.name + ' ' + kKinds[entry.kind]);
        }
        return all;
    }

    TemporaryDirectory m_directory;
    std::string m_root = m_directory.file("root");
    FileStorage m_storage{m_root, "data/vireo"};

    void SetUp() override { std::filesystem::create_directory(m_root); }
};

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

TEST_F(FileStorageTest, PathsOfThePhoneMeanPlacesBelowTheRoot) {
    write(m_root + "/Vireo_Deploy/music/waltz", "1-2-3");
    initialised("music/");
    EXPECT_EQ(names("/Vireo_Deploy/music/"), std::vector<std::string>{"waltz file"});
    m_storage.createSymlink("/Vireo_Deploy/music/waltz", below("music/waltz"));
    EXPECT_EQ(std::filesystem::read_symlink(below("music/waltz")),
              m_root + "/Vireo_Deploy/music/waltz");
    EXPECT_EQ(m_storage.compareFiles("/Vireo_Deploy/music/waltz", below("music/waltz")), 0);
    m_storage.copyFile("/Vireo_Deploy/music/waltz", below("music/copy"));
    EXPECT_EQ(read(below("music/copy")), "1-2-3");
}

TEST_F(FileStorageTest, ALinkIsMadeOnceAndReplacesOnlyWhereAsked) {
    write(m_root + "/Vireo_Deploy/a", "default");
    write(below("own"), "own");
    const std::string link = below("link");
    m_storage.createSymlink("/Vireo_Deploy/a", link);
    EXPECT_EQ(errorOf([&] { m_storage.createSymlink("/Vireo_Deploy/a", link); }), "")
        << "it is right already";
    EXPECT_THAT(errorOf([&] { m_storage.createSymlink("/Vireo_Deploy/b", link); }),
                HasSubstr("cannot link \"" + link + "\": File exists"));
    EXPECT_THAT(errorOf([&] { m_storage.createSymlink("/Vireo_Deploy/a", below("own")); }),
                HasSubstr("File exists"));
    EXPECT_EQ(read(below("own")), "own");
    EXPECT_THAT(errorOf([&] { m_storage.createSymlink("/Vireo_Deploy/a", below("no/way")); }),
                HasSubstr("No such file"));

    EXPECT_THAT(errorOf([&] { m_storage.replaceBySymlink("/Vireo_Deploy/a", below("own")); }),
                HasSubstr("cannot link \"" + below("own") + "\": there is a file of that name"));
    EXPECT_EQ(read(below("own")), "own");
    write(below("own"), "default");
    m_storage.replaceBySymlink("/Vireo_Deploy/a", below("own"));
    m_storage.replaceBySymlink("/Vireo_Deploy/b", link);
    EXPECT_TRUE(std::filesystem::is_symlink(below("own")));
    EXPECT_EQ(read(below("own")), "default");
    EXPECT_EQ(std::filesystem::read_symlink(link), m_root + "/Vireo_Deploy/b");
    std::filesystem::create_directory(below("directory"));
    EXPECT_NE(errorOf([&] { m_storage.replaceBySymlink("/x", below("directory")); }), "");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(below("")), {}), 3)
        << "nothing hidden is left";
}

TEST_F(FileStorageTest, FilesAreTheSameByTheirContents) {
    const std::string block(100'000, 'b');
    write(below("one"), block + "1");
    write(below("same"), block + "1");
    write(below("other"), block + "2");
    write(below("longer"), block + "11");
    write(below("empty"), "");
    write(below("nothing"), "");
    write(m_directory.file("outside"), block + "1");
    std::filesystem::create_symlink(below("one"), below("link"));
    std::filesystem::create_symlink("link", below("link-to-link"));
    std::filesystem::create_symlink(m_directory.file("outside"), below("hostile"));
    std::filesystem::create_symlink("../../../outside", below("climbing"));
    std::filesystem::create_symlink("round", below("round"));
    ASSERT_EQ(::mkfifo(below("pipe").c_str(), 0600), 0);
    for (const char* name : {"one", "same", "link", "link-to-link"}) {
        EXPECT_EQ(m_storage.compareFiles(below("one"), below(name)), 0) << name;
    }
    EXPECT_EQ(m_storage.compareFiles(below("empty"), below("nothing")), 0);
    for (const char* name : {"other", "longer", "empty", "missing", "hostile", "climbing", "round",
                             "pipe", "", "no/way"}) {
        EXPECT_EQ(m_storage.compareFiles(below("one"), below(name)), 1) << name;
        EXPECT_EQ(m_storage.compareFiles(below(name), below("one")), 1) << name;
    }
}

TEST_F(FileStorageTest, ACopyReplacesALinkAndNeverItself) {
    write(m_root + "/Vireo_Deploy/bell", "default");
    write(below("mine"), std::string(150'000, 'm'));
    std::filesystem::create_symlink(m_root + "/Vireo_Deploy/bell", below("bell"));
    std::filesystem::create_hard_link(below("mine"), below("twin"));
    write(m_directory.file("outside"), "secret");
    std::filesystem::create_symlink(m_directory.file("outside"), below("hostile"));

    m_storage.copyFile(below("mine"), below("bell"));
    EXPECT_EQ(read(below("bell")), std::string(150'000, 'm'));
    EXPECT_EQ(read(m_root + "/Vireo_Deploy/bell"), "default") << "not written through";
    for (const char* itself : {"mine", "twin"}) {
        m_storage.copyFile(below("mine"), below(itself));
        EXPECT_EQ(read(below("mine")), std::string(150'000, 'm')) << itself;
    }
    std::filesystem::create_symlink(m_root + "/Vireo_Deploy/bell", below("link"));
    m_storage.copyFile(below("link"), below("link"));
    EXPECT_TRUE(std::filesystem::is_symlink(below("link")));
    m_storage.copyFile(below("link"), below("contents"));
    EXPECT_EQ(read(below("contents")), "default");
    EXPECT_FALSE(std::filesystem::is_symlink(below("contents")));

    for (const char* source : {"hostile", "missing", "no/way"}) {
        EXPECT_NE(errorOf([&] { m_storage.copyFile(below(source), below("stolen")); }), "");
        EXPECT_FALSE(std::filesystem::exists(below("stolen"))) << source;
    }
    EXPECT_NE(errorOf([&] { m_storage.copyFile(below("mine"), below("no/way")); }), "");
    {
        const FullDisk fullDisk;
        EXPECT_THAT(errorOf([&] { m_storage.copyFile(below("mine"), below("contents")); }),
                    HasSubstr("cannot write"));
    }
    EXPECT_EQ(read(below("contents")), "default");
    for (const auto& entry : std::filesystem::directory_iterator(below(""))) {
        EXPECT_NE(entry.path().filename().string().front(), '.') << "something hidden is left";
    }
}

TEST_F(FileStorageTest, TheStorageHasANameAndRoom) {
    std::string id = "old";
    std::string name = "old";
    m_storage.getStorageName(id, name);
    EXPECT_EQ(id, "/data/vireo/");
    EXPECT_EQ(name, "Phone storage");
    const StorageSpace space = m_storage.space();
    EXPECT_GT(space.total, 0U);
    EXPECT_LE(space.free, space.total);
}

TEST_F(FileStorageTest, WhatAnEarlierRunLeftIsRemoved) {
    write(below("images/.vireo-part-1-1"), "half");
    write(below("images/kept"), "kept");
    std::filesystem::create_symlink("kept", below("images/.vireo-part-1-2"));
    write(below("images/.hidden"), "kept");
    removePartialFiles(m_root);
    EXPECT_FALSE(std::filesystem::exists(below("images/.vireo-part-1-1")));
    EXPECT_FALSE(std::filesystem::is_symlink(below("images/.vireo-part-1-2")));
    EXPECT_EQ(read(below("images/kept")), "kept");
    EXPECT_EQ(read(below("images/.hidden")), "kept");
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

TEST_F(FileStorageTest, DeletingALinkLeavesWhatItPointsTo) {
    write(below("target"), "kept");
    std::filesystem::create_symlink("target", below("link"));
    std::filesystem::create_directory(below("directory"));
    m_storage.deleteFile(below("link"));
    EXPECT_FALSE(std::filesystem::is_symlink(below("link")));
    EXPECT_EQ(read(below("target")), "kept");
    m_storage.deleteFile(below("target"));
    EXPECT_FALSE(std::filesystem::exists(below("target")));
    write(below("target"), "kept");
    m_storage.createSymlink("/anything", below("link"));
    m_storage.deleteSymlink(below("link"));
    EXPECT_FALSE(std::filesystem::is_symlink(below("link")));
    EXPECT_THAT(errorOf([&] { m_storage.deleteSymlink(below("target")); }),
                HasSubstr("it is a file and no link"));
    EXPECT_NE(errorOf([&] { m_storage.deleteSymlink(below("link")); }), "");
    EXPECT_NE(errorOf([&] { m_storage.deleteSymlink(below("directory")); }), "");
    EXPECT_EQ(read(below("target")), "kept");
    m_storage.deleteFile(below("target"));
    EXPECT_THAT(errorOf([&] { m_storage.deleteFile(below("target")); }),
                HasSubstr("cannot delete \"" + below("target") + "\": No such file"));
    EXPECT_NE(errorOf([&] { m_storage.deleteFile(below("directory")); }), "");
    EXPECT_NE(errorOf([&] { m_storage.deleteFile(below("directory/")); }), "");
    EXPECT_TRUE(std::filesystem::exists(below("directory")));
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

TEST_F(FileStorageTest, AMoveReplacesWhatIsThereAndNeverWritesThroughALink) {
    write(below("new"), "new");
    write(below("old"), "old");
    write(m_root + "/Defaults/bell", "default");
    std::filesystem::create_symlink(m_root + "/Defaults/bell", below("bell"));
    m_storage.renameFile(below("new"), below("bell"));
    EXPECT_EQ(read(below("bell")), "new");
    EXPECT_FALSE(std::filesystem::is_symlink(below("bell")));
    EXPECT_EQ(read(m_root + "/Defaults/bell"), "default");

    std::filesystem::create_symlink(m_root + "/Defaults/bell", below("link"));
    m_storage.renameFile(below("link"), below("deleted/ringtones/link"));
    EXPECT_TRUE(std::filesystem::is_symlink(below("deleted/ringtones/link")));
    m_storage.renameSymlink(below("deleted/ringtones/link"), below("moved/link"));
    EXPECT_TRUE(std::filesystem::is_symlink(below("moved/link")));
    EXPECT_THAT(errorOf([&] { m_storage.renameSymlink(below("old"), below("x")); }),
                HasSubstr("cannot move \"" + below("old") + "\": it is a file and no link"));
    m_storage.renameFile(below("old"), below("bell"));
    EXPECT_EQ(read(below("bell")), "old");

    EXPECT_THAT(errorOf([&] { m_storage.renameFile(below("missing"), below("x")); }),
                HasSubstr("cannot move \"" + below("missing") + "\": No such file"));
    EXPECT_THAT(errorOf([&] { m_storage.renameFile(below("deleted"), below("x")); }),
                HasSubstr("it is a directory"));
    EXPECT_THAT(errorOf([&] { m_storage.renameFile(below("bell"), below("deleted")); }),
                HasSubstr("cannot move \"" + below("bell") + "\" to \"" + below("deleted") + '"'));
    EXPECT_EQ(read(below("bell")), "old");
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

TEST_F(FileStorageTest, AReadOnlyDiskIsReadAndNothingElse) {
    if (!OwnMounts::arePossible()) {
        GTEST_SKIP() << "no mount namespaces here";
    }
    write(below("images/a"), "kept");
    EXPECT_TRUE(OwnMounts::run([this] {
        return OwnMounts::makeReadOnly(m_root) && initialised("images/") == below("images/") &&
               m_storage.fileSize(below("images/a")) == 4 &&
               m_storage.list(below("images")).size() == 1 &&
               refusal("new/").find("Read-only file system") != std::string::npos &&
               !errorOf([this] { m_storage.deleteFile(below("images/a")); }).empty() &&
               !errorOf([this] { m_storage.renameFile(below("images/a"), below("b")); }).empty();
    }));
    EXPECT_EQ(read(below("images/a")), "kept");
}

TEST_F(FileStorageTest, AFullDiskLosesNothing) {
    if (!OwnMounts::arePossible()) {
        GTEST_SKIP() << "no mount namespaces here";
    }
    EXPECT_TRUE(OwnMounts::run([this] {
        if (!OwnMounts::mountDisk(m_root, 64)) {
            return false;
        }
        initialised("images/");
        write(below("images/a"), "kept");
        write(below("ballast"), std::string(200'000, 'b'));
        const std::string full = errorOf([this] {
            for (int i = 0; i < 1000; ++i) {
                initialised("directory-" + std::to_string(i) + '/');
            }
        });
        m_storage.renameFile(below("images/a"), below("b"));
        m_storage.deleteFile(below("ballast"));
        initialised("again/");
        return full.find("No space left on device") != std::string::npos &&
               read(below("b")) == "kept";
    }));
}

}  // namespace
}  // namespace vireo::test
