#pragma once

#include <string>

#include "Visibility.h"
#include "device/TransferRequest.h"

namespace vireo {

class AdminProgressCallback;

/// The platform's administration: file transfer, software images, reboot. Forwards to the installed
/// `TransferPort`, `ImagePort` and `RebootPort`. Safe from every thread. Nothing is thrown; what
/// fails is logged and answered with false, and so is everything without a port.
class VIREO_API GPALAdmin {
public:
    /// What HTTPS transfers that are started later verify and present. Until it was called once,
    /// they fail.
    static bool setSecurityDetails(const SecurityDetails& details);
    /// Starts to fetch a file in the background. False when it could not be started, for instance
    /// because another transfer or a burn is under way; then `progress` is never called. Else
    /// `progress` gets exactly one last report, never on the thread that called; of a short piece
    /// of work it may come before this returns. It outlives that report. A file that is not
    /// complete never appears under its name, nor in a listing.
    static bool getFile(const TransferRequest& request, AdminProgressCallback& progress);
    /// Whether a transfer or a burn is under way: from its start until its last report is made.
    /// Whoever gets the report may start the next one at once; that begins when the report has
    /// returned.
    static bool isActive();

    /// For who clears a directory, absolute and ending in "/": a file that is being fetched into it
    /// and does not bear its name yet when this returns never will, and its transfer fails soon.
    /// What an interrupted transfer left there is removed.
    static void discardFiles(const std::string& directory);

    /// Whether the file is a software image for this kind of phone.
    static bool verifyImageType(const std::string& path, const std::string& hardwareVariant);
    /// Starts to burn an image in the background; as `getFile` for the rest.
    static bool imageBurn(const std::string& path, AdminProgressCallback& progress);

    /// Reboots the phone soon: when the message that is being handled is answered. False when it
    /// cannot; whether it then comes about is not known before.
    static bool rebootDevice();
};

}  // namespace vireo
