#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

#include "harness/Failure.h"

namespace vireo::bench {

/// A new directory that goes with this object.
class ScratchDirectory {
public:
    explicit ScratchDirectory(const std::filesystem::path& parent) {
        std::filesystem::create_directories(parent);
        m_path = (parent / "vireo-bench-XXXXXX").string();
        if (::mkdtemp(m_path.data()) == nullptr) {
            failSystem("cannot make a directory in " + parent.string());
        }
    }
    ~ScratchDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;

    std::string file(const std::string& name) const { return m_path + '/' + name; }
    const std::string& path() const { return m_path; }

private:
    std::string m_path;
};

}  // namespace vireo::bench
