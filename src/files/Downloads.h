#pragma once

#include <functional>
#include <string>

#include "files/CurrentDownload.h"
#include "files/DownloadReporter.h"
#include "files/DownloadStarter.h"
#include "files/FileValidator.h"
#include "files/ImageBurner.h"
#include "files/SingleFileTypes.h"

namespace vireo {

/// Everything about files from servers, wired together.
class Downloads {
public:
    /// Other services, null while they are not there, and whoever is to hear of progress.
    struct Services {
        FileValidator::MediaSource media;
        FileValidator::MobilitySource mobility;
        DownloadReporter::RemoteProgress remote;
    };

    Downloads(DownloadStarter::Surroundings surroundings, Services services);

    DownloadStarter& starter() { return m_starter; }
    FileValidator& validator() { return m_validator; }
    /// The platform's report on a transfer or a burn.
    bool progressNotify(int percent) { return m_reporter.progressNotify(percent); }
    /// As the interface of the service has it.
    int requestCurrentDownloadStatus(LocalMgmtIfc::eFiletype type,
                                     const std::string& fileName) const;
    /// Whether the client that waits for the current download, if there is one, lets the phone be
    /// shut down.
    bool requestShutdown() const;
    /// Who has left is neither told nor asked any more.
    void forget(const LocalMgmtCallbackIfc& callback) { m_current.forget(callback); }
    /// Has the pictures of the phone book read again, not while a download is being set up.
    void refreshPictureClips();

private:
    FileValidator::MobilitySource m_mobility;
    CurrentDownload m_current;
    FileValidator m_validator;
    ImageBurner m_burner;
    SingleFileTypes m_singleFiles;
    DownloadReporter m_reporter;
    DownloadStarter m_starter;
};

}  // namespace vireo
