#pragma once

#include <string>
#include <string_view>

namespace vireo {

class LocalMgmtCallbackIfc;

/// The side of a client that hears of downloads, in the protocol "vireo_text". A message is a
/// command word and its values, all in the form of `Serializer`.
///
///   informDownloadProgress, percent, path
///   informDownloadCompletion, path
///   requestShutdown                          the only one that wants a reply
///
/// Stateless, safe from every thread.
class CallbackText {
public:
    /// The interface that such messages are for.
    static constexpr std::string_view kInterface = "LocalMgmtCallbackIfc";

    /// Calls `callback` as `message` says, and replaces `reply` by the answer: the command word as
    /// it came, and "true" or "false". A message that is not understood calls nobody; that, and a
    /// callback that throws, which is logged, are answered with "false".
    static void serve(LocalMgmtCallbackIfc& callback, std::string_view message, std::string& reply);
};

}  // namespace vireo
