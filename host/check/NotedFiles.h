#pragma once

#include <set>
#include <string>

#include "runtime/ConfigDirectory.h"

namespace vireo {

/// Configuration files in one directory that remembers which of them were asked for. Used by one
/// thread.
class NotedFiles : public ConfigDirectory {
public:
    using ConfigDirectory::ConfigDirectory;

    bool readConfigFile(const std::string& name, std::string& content,
                        std::string& error) override {
        m_names.insert(name);
        return ConfigDirectory::readConfigFile(name, content, error);
    }

    const std::set<std::string>& names() const { return m_names; }

private:
    std::set<std::string> m_names;
};

}  // namespace vireo
