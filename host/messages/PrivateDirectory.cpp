#include "messages/PrivateDirectory.h"

#include <sys/stat.h>

#include <cerrno>
#include <system_error>

namespace vireo {

bool PrivateDirectory::create(const std::filesystem::path& path, std::string& error) {
    std::filesystem::path soFar;
    for (const std::filesystem::path& part : path) {
        soFar /= part;
        if (::mkdir(soFar.c_str(), 0700) == 0) {
            continue;
        }
        const int reason = errno;
        // A directory that is there may report a read-only file system or no permission instead.
        std::error_code ignored;
        if (!std::filesystem::is_directory(soFar, ignored)) {
            error = "cannot create the directory " + soFar.string() + ": " +
                    (reason == EEXIST ? "there is something else of that name"
                                      : std::generic_category().message(reason));
            return false;
        }
    }
    return true;
}

}  // namespace vireo
