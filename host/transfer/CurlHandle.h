#pragma once

#include <curl/curl.h>

#include <memory>
#include <string>

#include "device/TransferRequest.h"
#include "transfer/SourceUrl.h"
#include "transfer/TransferOptions.h"

namespace vireo {

struct CurlCleanup {
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};
using CurlHandle = std::unique_ptr<CURL, CurlCleanup>;

/// Prepares the library; true when it can be used. Safe from every thread.
bool startCurl();

/// A handle that fetches one file: from this source, by its own protocol alone, with nothing taken
/// from the environment. Time-outs and call-backs are the caller's. Empty when memory is short or
/// an option is refused.
CurlHandle makeHandle(const TransferRequest& request, const SourceUrl& source,
                      const TransferOptions& options);

/// Makes a handle verify and present what `details` says, and trust nobody else. False when an
/// option is refused.
bool secure(CURL* handle, const SecurityDetails& details);

/// Whether the details suffice to verify a server as their policy wants it.
bool suffice(const SecurityDetails& details);

}  // namespace vireo
