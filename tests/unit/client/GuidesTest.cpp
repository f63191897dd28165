#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace vireo {
namespace {

std::string contents(const std::filesystem::path& file) {
    std::ifstream in(file);
    EXPECT_TRUE(in) << file;
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

TEST(Guides, QuoteTheExamplesThatAreBuilt) {
    const std::string guide = contents(std::filesystem::path(VIREO_DOCS) / "agents.md") +
                              contents(std::filesystem::path(VIREO_DOCS) / "downloads.md");
    int quoted = 0;
    for (const auto& entry : std::filesystem::directory_iterator(VIREO_EXAMPLES)) {
        if (entry.is_directory()) {
            const std::string block = "```cpp\n" + contents(entry.path() / "main.cpp") + "```\n";
            EXPECT_NE(guide.find(block), std::string::npos) << entry.path();
            ++quoted;
        }
    }
    int blocks = 0;
    for (std::size_t at = 0; (at = guide.find("```cpp\n", at)) != std::string::npos; ++at) {
        ++blocks;
    }
    EXPECT_EQ(blocks, quoted) << "code that is not built";
}

}  // namespace
}  // namespace vireo
