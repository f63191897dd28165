#include <gmock/gmock.h>
#include <sys/stat.h>

#include "support/FullDisk.h"
#include "unit/platform/FileStorageFixture.h"

namespace vireo::test {
namespace {

using ::testing::HasSubstr;
using FileChangesTest = FileStorageTest;

TEST_F(FileChangesTest, ALinkIsMadeOnceAndReplacesOnlyWhereAsked) {
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

TEST_F(FileChangesTest, FilesAreTheSameByTheirContents) {
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

TEST_F(FileChangesTest, ACopyReplacesALinkAndNeverItself) {
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

TEST_F(FileChangesTest, DeletingALinkLeavesWhatItPointsTo) {
    const std::string target = below("target");
    const std::string link = below("link");
    write(target, "kept");
    std::filesystem::create_symlink("target", link);
    m_storage.deleteFile(link);
    m_storage.createSymlink("/anything", link);
    m_storage.deleteSymlink(link);
    EXPECT_FALSE(std::filesystem::is_symlink(link));
    EXPECT_THAT(errorOf([&] { m_storage.deleteSymlink(target); }),
                HasSubstr("it is a file and no link"));
    EXPECT_EQ(read(target), "kept");
    m_storage.deleteFile(target);
    EXPECT_THAT(errorOf([&] { m_storage.deleteFile(target); }),
                HasSubstr("cannot delete \"" + target + "\": No such file"));
    std::filesystem::create_directory(below("directory"));
    for (const char* name : {"link", "directory", "directory/"}) {
        EXPECT_NE(errorOf([&] { m_storage.deleteSymlink(below(name)); }), "") << name;
        EXPECT_NE(errorOf([&] { m_storage.deleteFile(below(name)); }), "") << name;
    }
    EXPECT_TRUE(std::filesystem::exists(below("directory")));
}

TEST_F(FileChangesTest, AMoveReplacesWhatIsThereAndNeverWritesThroughALink) {
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

}  // namespace
}  // namespace vireo::test
