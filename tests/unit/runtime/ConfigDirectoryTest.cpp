#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "runtime/ConfigDirectory.h"
#include "support/TemporaryDirectory.h"

namespace vireo::test {
namespace {

TEST(ConfigDirectory, ReadsPlainFilesByteForByteAndRefusesTheRest) {
    const TemporaryDirectory directory;
    const std::string bytes("<dxl>\r\n\0\xff</dxl>", 16);
    std::filesystem::create_directory(directory.file("config"));
    std::ofstream(directory.file("config/items.xml"), std::ios::binary) << bytes;
    std::ofstream(directory.file("config/empty.xml"));
    std::ofstream(directory.file("config/.hidden")) << "x";
    std::ofstream(directory.file("outside.xml")) << "x";
    std::ofstream(directory.file("config/huge.xml"));
    std::filesystem::resize_file(directory.file("config/huge.xml"), 1025);
    std::filesystem::create_directory(directory.file("config/folder"));
    ::mkfifo(directory.file("config/pipe").c_str(), 0600);
    ConfigDirectory config(directory.file("config"), 1024);
    const struct {
        std::string name;
        bool found;
        std::string content;
        std::string error;
    } rows[] = {
        {"items.xml", true, bytes, ""},
        {"empty.xml", true, "", ""},
        {"missing.xml", false, "", "missing.xml: No such file"},
        {"folder", false, "", "no regular file"},
        {"pipe", false, "", "no regular file"},
        {"huge.xml", false, "", "larger than 1024 bytes"},
        {"", false, "", "no plain file name"},
        {".hidden", false, "", "\".hidden\" is no plain file name"},
        {"..", false, "", "no plain file name"},
        {"../outside.xml", false, "", "no plain file name"},
        {"folder/x", false, "", "no plain file name"},
        {directory.file("outside.xml"), false, "", "no plain file name"},
        {std::string("items.xml\0x", 11), false, "", "no plain file name"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        std::string content = "before";
        std::string error;
        EXPECT_EQ(config.readConfigFile(row.name, content, error), row.found);
        EXPECT_EQ(content, row.found ? row.content : "before");
        EXPECT_NE(error.find(row.error), std::string::npos) << error;
    }
}

}  // namespace
}  // namespace vireo::test
