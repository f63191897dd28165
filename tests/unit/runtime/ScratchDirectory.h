#pragma once

#include <stdlib.h>

#include <filesystem>
#include <string>

namespace vireo::test {

/// A new directory for one test, removed with all its content.
class ScratchDirectory {
public:
    ScratchDirectory() {
        std::string pattern = (std::filesystem::temp_directory_path() / "vireo-XXXXXX").string();
        m_path = ::mkdtemp(pattern.data());
    }
    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;
    ~ScratchDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    const std::filesystem::path& path() const { return m_path; }
    std::string operator/(const std::string& name) const { return (m_path / name).string(); }

private:
    std::filesystem::path m_path;
};

/// The permission bits of what is at `path`.
inline unsigned modeOf(const std::string& path) {
    return static_cast<unsigned>(std::filesystem::status(path).permissions());
}

}  // namespace vireo::test
