#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>

#include "files/ConfinedRoot.h"
#include "messages/FileDescriptor.h"

namespace vireo {

/// A file on its way: it grows under a hidden name in the directory where it is to appear, and gets
/// its own name when it is complete and on stable storage. It is removed when the object goes
/// before that. For one thread at a time. Errors are one line without the path of the file.
class PartialFile {
public:
    /// Why a discarded file does not get its name.
    static constexpr const char* kDiscarded = "its directory was cleared meanwhile";

    /// `finalPath` is absolute and lies below `root`, which outlives the object; its directory
    /// exists and is reached without a link. Empty with an `error` when that cannot hold the file,
    /// or something else than a file or a link has its name.
    static std::optional<PartialFile> create(const ConfinedRoot& root, const std::string& finalPath,
                                             std::string& error);
    PartialFile(PartialFile&& other) noexcept;
    PartialFile& operator=(PartialFile&& other) = delete;
    ~PartialFile();

    /// Bytes so far.
    std::uint64_t size() const { return m_written + m_pending.size(); }
    bool append(const char* bytes, std::size_t count, std::string& error);
    /// Gives what was appended to the operating system, all of it.
    bool flush(std::string& error);
    /// Begins again with nothing.
    bool restart(std::string& error);
    /// Whether the hidden file still stands in the directory that its final path names. Somebody
    /// may have cleared it meanwhile.
    bool isInPlace() const;
    /// Writes everything to stable storage and gives the file its name, in one step. A file or a
    /// link of that name is replaced; what a link points to stays as it is. False once
    /// `isDiscarded` is set; that is looked at in the same step.
    bool commit(const std::atomic<bool>& isDiscarded, std::string& error);

private:
    PartialFile(const ConfinedRoot& root, FileDescriptor directory, const std::string& finalPath);

    bool open(std::string& error);
    bool write(const char* bytes, std::size_t count, std::string& error);
    void startWriteBack();
    bool takeName(const std::atomic<bool>& isDiscarded, std::string& error);

    const ConfinedRoot& m_root;
    FileDescriptor m_directory;
    std::string m_directoryPath;
    std::string m_finalName;
    std::string m_hiddenName;  ///< empty: there is none any more
    FileDescriptor m_file;
    std::string m_pending;  ///< appended, not written yet
    std::uint64_t m_written = 0;
    std::uint64_t m_writtenBack = 0;
};

}  // namespace vireo
