#pragma once

#include <string>

#include "files/ConfinedRoot.h"

namespace vireo {

/// Small files below a root that nobody but its owner may read.
class PrivateFile {
public:
    /// `directory` is below the root and is made where it is missing.
    PrivateFile(ConfinedRoot root, const std::string& directory, std::string name);

    /// Absolute.
    std::string path() const;
    /// Puts `content` in the place of what the file held, in one step and on stable storage: the
    /// file holds the old text or the new one whatever happens. Mode 0600; when root writes below
    /// a directory of somebody else, the file is that one's. False with a one-line `error`, and
    /// the old text, when it cannot be written.
    bool replace(const std::string& content, std::string& error) const;
    /// Empty when there is none. False with an `error` when it cannot be read, or others may.
    bool read(std::string& content, std::string& error) const;
    /// True when it is not there afterwards.
    bool remove(std::string& error) const;

private:
    bool isThere() const;

    const ConfinedRoot m_root;
    const std::vector<std::string> m_directory;
    const std::string m_name;
};

}  // namespace vireo
