#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace vireo::test {

/// What is in a file; empty when there is none.
inline std::string readFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// Makes a file of these bytes, and the directories on its way.
inline void writeFile(const std::filesystem::path& path, const std::string& bytes) {
    std::error_code ignored;
    std::filesystem::create_directories(path.parent_path(), ignored);
    std::ofstream(path, std::ios::binary) << bytes;
}

inline std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

/// The permission bits of what is at `path`.
inline unsigned modeOf(const std::filesystem::path& path) {
    return static_cast<unsigned>(std::filesystem::status(path).permissions());
}

}  // namespace vireo::test
