#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

namespace vireo::bench {

/// The configuration of a phone made up for measuring, of any size. Of its items
///
///   half is the service's own and kept in the store: the first 400 in tables of one row and
///   40 columns, as settings are, the others in one indexed table of 10 columns, as keys are;
///   a tenth is its own and in memory alone;
///   a fifth belongs to an owner that the benchmark plays;
///   the rest belongs to an owner that is never there.
class PhoneConfiguration {
public:
    static constexpr const char* kOwnerId = "BenchMgmtId";

    /// With `isShuffled` the rows of each file stand in random order, always the same, instead of
    /// that of their names.
    PhoneConfiguration(std::size_t items, bool isShuffled = false);

    /// Writes all files into `directory`, which is made.
    void write(const std::filesystem::path& directory) const;

    std::size_t items() const { return m_items; }
    std::size_t storedCount() const { return m_items / 2; }
    std::size_t memoryCount() const { return m_items / 10; }
    std::size_t ownedCount() const { return m_items / 5; }
    std::size_t absentCount() const {
        return m_items - storedCount() - memoryCount() - ownedCount();
    }

    // The tags, each kind from 0 on. Numbers have leading zeros, so names and numbers sort alike.
    static std::string storedTag(std::size_t number);
    static std::string memoryTag(std::size_t number);
    static std::string ownedTag(std::size_t number);
    static std::string absentTag(std::size_t number);

private:
    std::size_t m_items;
    bool m_isShuffled;
};

}  // namespace vireo::bench
