#pragma once

#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "CallStatus.h"
#include "Visibility.h"
#include "data/ManageableData.h"
#include "service/Method.h"

namespace vireo {

class PeerConnection;

/// The local management interface for another process: a named connection to the service over its
/// Unix socket, and the interface's functions as calls that wait for their reply.
///
/// Safe from every thread: one call is under way at a time, others wait for their turn, and the
/// timeout of a call starts with its turn. Nothing is thrown. While a call waits, a request from
/// the service gets an empty reply and a notification is dropped.
///
/// A call that timed out leaves the connection usable: its late reply is recognised and dropped.
/// After eDisconnected every further call answers that at once; connect again.
class VIREO_API LocalMgmtClient {
public:
    /// How calls are encoded. The functions are the same; XML cannot carry control characters
    /// and invalid UTF-8.
    enum class Protocol {
        eRpc,  ///< the default protocol "vireo_rpc"
        eXml,  ///< "vireo_svc_xml"
    };

    struct Options {
        std::string socketPath;
        /// The name under which the service knows this connection, 1 to 64 letters,
        /// digits, '.', '_' and '-'. One that ends in "-*" takes the lowest free number.
        std::string channelName = "client-*";
        /// How long connecting, and then each call, may take.
        std::chrono::milliseconds timeout{5000};
        Protocol protocol = Protocol::eRpc;
    };

    /// Null on failure; `error` then holds one line that names the path and the cause.
    static std::unique_ptr<LocalMgmtClient> connect(const Options& options, std::string& error);
    ~LocalMgmtClient();
    LocalMgmtClient(const LocalMgmtClient&) = delete;
    LocalMgmtClient& operator=(const LocalMgmtClient&) = delete;

    /// The name that the service gave to this connection.
    const std::string& channelName() const;
    /// Why the connection ended; empty while it stands.
    std::string closeReason() const;
    /// How long each later call may take. Positive; longer than a year counts as a year.
    void setTimeout(std::chrono::milliseconds timeout);

    // The out parameters of all calls are changed by eDone only.

    /// Calls any method of the interface.
    CallStatus call(const Method& request, Method& reply);
    /// Sends `payload` as it is in a protocol of the service.
    CallStatus callRaw(std::string_view protocol, std::string_view payload,
                       std::string& replyPayload);

    /// Reads every item that the record lists; on eDone the record is the answer. `result` is
    /// false when an item could not be read.
    CallStatus getData(ManageableData& record, bool& result);
    /// Writes every item that the record lists; on eDone the record is the answer and carries the
    /// refusals. `result` is false when an item was not accepted.
    CallStatus setData(ManageableData& record, bool& result);

    /// The name of the item's schema, empty when the item is unknown.
    CallStatus findSchemaName(const std::string& tag, std::string& schemaName);
    /// The text form of a schema, empty when it is unknown.
    CallStatus exportSchema(const std::string& schemaName, std::string& schemaXml);
    /// Adds a schema to the record; `result` is false, and the record as it was, when it is
    /// unknown.
    CallStatus getSchema(const std::string& schemaName, ManageableData& record, bool& result);

    /// Makes the service forget the last known values of other owners' items.
    CallStatus invalidateVCMSCache();

    /// The phone's busy mask: a bit for each thing that keeps it busy, 0 when it is idle.
    CallStatus retrievePhoneBusyStatus(unsigned& mask);
    /// Sets, or takes away, the bits of `bits` in it.
    CallStatus setPhoneBusyStatus(unsigned bits);
    CallStatus clearPhoneBusyStatus(unsigned bits);

    /// How many files of a type the phone keeps, and how many characters their names may have.
    struct FileTypeLimits {
        int entries = 0;  ///< -1: as many as there is room for
        int nameCharacters = 0;
    };
    /// The limits of the type that bears the name `fileType` in messages, such as "images". The
    /// service takes an unknown name for the software type.
    CallStatus getFileTypeMetadata(const std::string& fileType, FileTypeLimits& limits);
    /// One of the two.
    CallStatus getFileTypeCountLimit(const std::string& fileType, int& entries);
    CallStatus getFileTypeNameLimit(const std::string& fileType, int& nameCharacters);

private:
    LocalMgmtClient(std::unique_ptr<PeerConnection> connection, std::chrono::milliseconds timeout,
                    Protocol protocol);

    CallStatus callNamed(const Method& request, Method& reply);
    CallStatus askText(const Method& request, const char* answer, std::string& text);
    CallStatus askNumber(const Method& request, const char* answer, int& number);
    CallStatus sendBusyBits(const char* methodName, unsigned bits);
    CallStatus exchangeRecord(const char* methodName, ManageableData& record, bool& result);

    const std::unique_ptr<PeerConnection> m_connection;
    const Protocol m_protocol;
    std::chrono::milliseconds m_timeout;
    mutable std::mutex m_mutex;  // guards the time-out and the connection's state
};

}  // namespace vireo
