#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "files/ConfinedRoot.h"
#include "image/FlashPort.h"

namespace vireo {

/// A directory below the device root that stands for the phone's flash memory. It is made when the
/// first file is. No symbolic link is followed.
class FlashDirectory : public FlashPort {
public:
    /// `directory` is relative to the device root.
    FlashDirectory(const std::filesystem::path& deviceRoot, const std::string& directory);

    std::optional<File> open(const std::string& name) override;
    File create(const std::string& name) override;
    void close(File file) noexcept override;
    std::uint64_t size(File file) override;
    std::size_t read(File file, std::uint64_t offset, std::span<unsigned char> bytes) override;
    void write(File file, std::uint64_t offset, std::span<const unsigned char> bytes) override;
    void sync(File file) override;
    void rename(const std::string& from, const std::string& to) override;
    void remove(const std::string& name) override;
    void syncNames() override;
    std::uint64_t freeBytes() override;

private:
    bool isThere() const;
    FileDescriptor directory(ConfinedRoot::Missing missing) const;
    std::string pathOf(const std::string& name) const;

    ConfinedRoot m_device;
    std::vector<std::string> m_names;  ///< the directories that lead there
    std::string m_path;
};

}  // namespace vireo
