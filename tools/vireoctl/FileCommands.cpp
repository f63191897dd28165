// The commands about files of users.
#include <list>
#include <utility>

#include "Commands.h"
#include "FileTypes.h"
#include "UserTypes.h"

namespace vireo {

ExitCode Commands::listFiles(const std::string& fileType, const std::string& user) {
    std::list<std::string> files;
    const CallStatus status =
        user.empty() ? m_client.getListOfFilesOfType(fileType, files)
                     : m_client.getListOfFilesOfTypeAndUser(fileType, UserTypes::find(user), files);
    ExitCode code = ExitCode::eDone;
    if (!reportFailure(status, code)) {
        m_printer.files(files);
    }
    return code;
}

ExitCode Commands::deleteFile(const std::string& fileType, const std::string& fileName) {
    bool deleted = false;
    ExitCode code = ExitCode::eDone;
    if (!reportFailure(m_client.deleteFile(FileTypes::find(fileType), fileName, deleted), code)) {
        m_printer.deletion(fileType, fileName, deleted);
        code = deleted ? ExitCode::eDone : ExitCode::eRefused;
    }
    return code;
}

ExitCode Commands::changeUser(const std::string& user) {
    bool changed = false;
    ExitCode code = ExitCode::eDone;
    if (!reportFailure(m_client.changeCurrentUser(user, changed), code)) {
        Method reply("changeCurrentUser", Method::eResponse);
        reply.addBoolParameter("result", Parameter::eOut, changed);
        m_printer.method(reply);
        code = changed ? ExitCode::eDone : ExitCode::eRefused;
    }
    return code;
}

ExitCode Commands::showSpace() {
    std::string id;
    std::string displayName;
    MemoryInfo info;
    ExitCode code = ExitCode::eDone;
    if (reportFailure(m_client.getIDAndDisplayName(id, displayName), code) ||
        reportFailure(m_client.getUserDataSpaceInfo(info), code)) {
        return code;
    }
    m_printer.space(id, displayName, info);
    return info.totalBytes() > 0 ? ExitCode::eDone : ExitCode::eRefused;
}

}  // namespace vireo
