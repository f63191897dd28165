#include "runtime/ConfigDirectory.h"

#include <string_view>

#include "files/SmallFile.h"

namespace vireo {
namespace {

bool isPlainName(const std::string& name) {
    return !name.empty() && name.front() != '.' &&
           name.find_first_of(std::string_view("/\0", 2)) == std::string::npos;
}

}  // namespace

bool ConfigDirectory::readConfigFile(const std::string& name, std::string& content,
                                     std::string& error) {
    if (!isPlainName(name)) {
        error = "\"" + name + "\" is no plain file name";
        return false;
    }
    return SmallFile::read((m_directory / name).string(), m_largestFile, content, error);
}

}  // namespace vireo
