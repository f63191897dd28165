#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "files/FileStorage.h"
#include "support/TemporaryDirectory.h"

namespace vireo::test {

/// The storage of a phone that lies in a directory of its own.
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

}  // namespace vireo::test
