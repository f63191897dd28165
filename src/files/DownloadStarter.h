#pragma once

#include <functional>
#include <mutex>
#include <string>

#include "files/CurrentDownload.h"
#include "files/DownloadSettings.h"

namespace vireo {

class AdminProgressCallback;
class CertificateMgmtSvcIfc;
class DownloadReporter;
class Executable;
class RegistrySemaphore;
class SingleFileTypes;

/// Starts downloads, one at a time. Safe from every thread.
class DownloadStarter {
public:
    /// What it needs of the rest of the service. Everything outlives it.
    struct Surroundings {
        LocalMgmtIfc& items;
        AdminProgressCallback& progress;  ///< hears the platform's reports
        const RegistrySemaphore& registry;
        std::function<CertificateMgmtSvcIfc*()> certificates;  ///< null while there is none
        std::function<LocalMgmtIfc::eUsertype()> currentUser;
        std::mutex& directoryLock;  ///< held while files of users are removed
    };

    DownloadStarter(CurrentDownload& current, DownloadReporter& reporter,
                    SingleFileTypes& singleFiles, Surroundings surroundings);

    /// By the type's settings, the phone being busy meanwhile.
    bool startPlain(LocalMgmtIfc::eFiletype type);
    /// By the type's settings.
    bool startFromSettings(LocalMgmtIfc::eFiletype type, Executable* callback);
    /// With everything given.
    bool startFrom(const DownloadSource& source, LocalMgmtIfc::eFiletype type, Executable* callback,
                   bool overrideBusy);
    /// With everything given; returns when it has ended.
    bool fetchFrom(const DownloadSource& source, LocalMgmtIfc::eFiletype type);

private:
    /// How a download is to be made.
    struct Order {
        LocalMgmtIfc::eFiletype type = LocalMgmtIfc::FILETYPE_INVALID;
        LocalMgmtCallbackIfc* callback = nullptr;
        bool overridesBusy = false;
        bool isAwaited = false;
    };

    class Claim;

    bool startFromSettings(Claim& claim, LocalMgmtIfc::eFiletype type, Executable* callback);
    bool start(Claim& claim, const DownloadSource& source, const Order& order);
    bool completeAwaited(bool isSuccess);
    bool downloadFile(const DownloadSource& source, const Order& order);
    bool setUp(const DownloadSource& source, const Order& order);
    bool prepareTransport(LocalMgmtIfc::eDownloadProtocol protocol) const;

    CurrentDownload& m_current;
    SingleFileTypes& m_singleFiles;
    DownloadReporter& m_reporter;
    Surroundings m_surroundings;
};

}  // namespace vireo
