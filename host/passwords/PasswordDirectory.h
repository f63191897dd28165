#pragma once

#include <filesystem>
#include <string>

#include "files/ConfinedRoot.h"
#include "files/PrivateFile.h"

namespace vireo {

/// The phone's passwords as files below the device root that only their owner may read: `NAME` has
/// the hash of a password, `NAME.failures` how many wrong ones came in since the last right one.
/// Files are replaced whole, so a service that runs sees the old password or the new one.
class PasswordDirectory {
public:
    /// The name under which the password of the factory reset is kept.
    static constexpr const char* kFactoryReset = "factory-reset";

    /// `directory` is below the root. It need not be there yet.
    PasswordDirectory(const std::filesystem::path& root, std::string directory);

    /// Sets a password; nothing counts as failed any more. False with a one-line `error`.
    bool set(const std::string& name, const std::string& password, std::string& error) const;
    /// The hash, empty when no password is set. False with an `error` when it cannot be read.
    bool readHash(const std::string& name, std::string& hash, std::string& error) const;

    /// 0 when nothing was written or it cannot be read.
    unsigned readFailures(const std::string& name) const;
    /// False with an `error` when it cannot be written.
    bool writeFailures(const std::string& name, unsigned failures, std::string& error) const;

private:
    PrivateFile hashFile(const std::string& name) const;
    PrivateFile failuresFile(const std::string& name) const;

    ConfinedRoot m_root;
    std::string m_directory;
};

}  // namespace vireo
