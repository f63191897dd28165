#pragma once

#include <functional>
#include <string>

#include "files/CurrentDownload.h"

namespace vireo {

class FileValidator;
class ImageBurner;
class SingleFileTypes;

/// What becomes of the transfer that is under way: looks at the file, writes how it ended, tells
/// whoever wants to know, and has an image burnt. Called on the platform's threads.
class DownloadReporter {
public:
    /// Tells the remote management client of progress, if there is one.
    using RemoteProgress = std::function<void(int percent)>;

    /// Everything outlives this.
    DownloadReporter(LocalMgmtIfc& items, CurrentDownload& current, FileValidator& validator,
                     ImageBurner& burner, SingleFileTypes& singleFiles, RemoteProgress remote);

    /// The platform's report on a transfer or a burn. False when nothing is under way.
    bool progressNotify(int percent);
    /// Has the image of the current download burnt; for who was the first to want it. False, and
    /// everybody was told that it failed, when it is none for this phone or cannot be burnt now.
    bool burn(const CurrentDownload::Facts& facts);

private:
    void handleTransfer(int percent, const CurrentDownload::Facts& facts);
    void handleBurn(int percent, const CurrentDownload::Facts& facts);
    bool isAccepted(const CurrentDownload::Facts& facts);
    void tellAll(int percent, const CurrentDownload::Facts& facts);
    void informProgress(int value, const CurrentDownload::Facts& facts);
    void informCompletion(const CurrentDownload::Facts& facts);
    void end(const CurrentDownload::Facts& facts, bool success);

    LocalMgmtIfc& m_items;
    CurrentDownload& m_current;
    FileValidator& m_validator;
    ImageBurner& m_burner;
    SingleFileTypes& m_singleFiles;
    RemoteProgress m_remote;
};

}  // namespace vireo
