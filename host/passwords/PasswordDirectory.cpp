#include "passwords/PasswordDirectory.h"

#include <charconv>
#include <utility>

#include "passwords/PasswordHash.h"

namespace vireo {

PasswordDirectory::PasswordDirectory(const std::filesystem::path& root, std::string directory)
    : m_root(root), m_directory(std::move(directory)) {}

PrivateFile PasswordDirectory::hashFile(const std::string& name) const {
    return {m_root, m_directory, name};
}

PrivateFile PasswordDirectory::failuresFile(const std::string& name) const {
    return {m_root, m_directory, name + ".failures"};
}

bool PasswordDirectory::set(const std::string& name, const std::string& password,
                            std::string& error) const {
    const std::string hash = PasswordHash::make(password, error);
    return !hash.empty() && hashFile(name).replace(hash + '\n', error) &&
           failuresFile(name).remove(error);
}

bool PasswordDirectory::readHash(const std::string& name, std::string& hash,
                                 std::string& error) const {
    std::string content;
    if (!hashFile(name).read(content, error)) {
        return false;
    }
    hash = content.substr(0, content.find('\n'));
    return true;
}

unsigned PasswordDirectory::readFailures(const std::string& name) const {
    std::string content;
    std::string ignored;
    unsigned failures = 0;
    if (failuresFile(name).read(content, ignored)) {
        std::from_chars(content.data(), content.data() + content.size(), failures);
    }
    return failures;
}

bool PasswordDirectory::writeFailures(const std::string& name, unsigned failures,
                                      std::string& error) const {
    return failures == 0 ? failuresFile(name).remove(error)
                         : failuresFile(name).replace(std::to_string(failures) + '\n', error);
}

}  // namespace vireo
