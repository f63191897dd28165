#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "runtime/DeviceRoot.h"
#include "support/Files.h"
#include "support/TemporaryDirectory.h"

namespace vireo::test {
namespace {

TEST(DeviceRoot, IsCreatedPrivatelyAndUsedAgain) {
    const TemporaryDirectory directory;
    const std::string path = directory.file("var/phone");
    std::string error;
    const mode_t before = ::umask(0);
    auto root = DeviceRoot::prepare(path, error);
    ::umask(before);
    ASSERT_TRUE(root) << error;
    EXPECT_EQ(modeOf(path), 0700U);
    std::ofstream(path + "/kept") << "x";
    root.reset();
    EXPECT_TRUE(DeviceRoot::prepare(path, error)) << error;
    EXPECT_TRUE(std::filesystem::exists(path + "/kept"));
}

TEST(DeviceRoot, TwoServicesNeverShareOne) {
    const TemporaryDirectory directory;
    const std::string path = directory.file("phone");
    std::string error;
    const auto root = DeviceRoot::prepare(path, error);
    ASSERT_TRUE(root) << error;
    EXPECT_FALSE(DeviceRoot::prepare(path + "/../phone/", error));
    EXPECT_NE(error.find("is locked by process"), std::string::npos) << error;
    std::filesystem::remove(path + "/.lock");
    EXPECT_FALSE(DeviceRoot::prepare(path, error)) << "the directory itself is locked";
    EXPECT_NE(error.find("is locked by another process"), std::string::npos) << error;
}

TEST(DeviceRoot, AnUnusablePathIsNamed) {
    const TemporaryDirectory directory;
    std::string error;
    EXPECT_FALSE(DeviceRoot::prepare("", error));
    EXPECT_NE(error.find("the path is empty"), std::string::npos) << error;
    const std::string file = directory.file("file");
    std::ofstream(file) << "x";
    EXPECT_FALSE(DeviceRoot::prepare(file, error));
    EXPECT_NE(error.find("device root \"" + file + "\""), std::string::npos) << error;
    EXPECT_FALSE(DeviceRoot::prepare(file + "/root", error));
    EXPECT_NE(error.find("cannot create the directory"), std::string::npos) << error;
}

}  // namespace
}  // namespace vireo::test
