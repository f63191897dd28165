#pragma once

#include <chrono>
#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "CallStatus.h"
#include "LocalMgmtCallbackIfc.h"
#include "LocalMgmtIfc.h"
#include "MgmtAgentIfc.h"
#include "Visibility.h"
#include "data/ManageableData.h"
#include "device/MemoryInfo.h"
#include "service/Method.h"

namespace vireo {

class ClientSession;
class MethodCalls;

/// The local management interface for another process: a named connection to the service over its
/// Unix socket, and the interface's functions as calls that wait for their reply. With an agent of
/// the process it also owns items, and observes them; with a callback it hears of its downloads.
///
/// Safe from every thread: one call is under way at a time, others wait for their turn, and the
/// timeout of a call starts with its turn. Nothing is thrown.
///
/// **The agent** is called on a thread that waits in a call, and on one that serves: in a loop of
/// its own (`serve`, `pollDescriptor`), in `serveUntilStopped`, or in the library's
/// (`startServing`). It is called by one thread at a time. It may call the client on that
/// thread; while it does, the service may call it again, for a read or a write, at most 16 deep,
/// and notifications wait until it has returned. It must not wait for a call that another thread
/// makes: that call's turn comes when the agent has returned. What it throws counts as false.
/// Without an agent requests of the service get an empty reply and notifications are dropped.
/// All of this holds for **the callback**, too; the two are never called at the same time.
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
        /// Serves what the service asks and tells this connection; may be null. Not owned: it
        /// outlives the client, and may be called as soon as the client is connected and waits or
        /// serves, since an earlier process of this channel name may have registered.
        MgmtAgentIfc* agent = nullptr;
        /// Hears of the downloads that this connection starts, and is asked whether the phone may
        /// be shut down meanwhile; may be null. As for the agent otherwise. A download goes on
        /// without whoever started it: what is told may be about one of an earlier process of this
        /// channel name.
        LocalMgmtCallbackIfc* callback = nullptr;
    };

    /// Null on failure; `error` then holds one line that names the path and the cause.
    static std::unique_ptr<LocalMgmtClient> connect(const Options& options, std::string& error);
    /// Stops serving, and waits for the library's thread. Not from a call of the agent.
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

    // -- owning and observing items; eNoAgent without an agent ---------------------------------

    /// Makes the agent the owner of the items of `managementId`. With `bulk` all items of one
    /// request come to it in one record, else each in its own. `registered` is false when the id
    /// has an owner already, which stays; that may be an earlier process of this channel name, and
    /// what is meant for it comes to this one.
    CallStatus registerManagementIdentity(const std::string& managementId, bool bulk,
                                          bool& registered);
    /// Tells the agent of every change of the item, of each item of the collection, or of all items
    /// when `tag` is "all-data". With `bulk` the changes of one request come in one record, else
    /// each in its own. `observed` is false when there is no such item.
    CallStatus observeData(const std::string& tag, bool bulk, bool& observed);
    /// The same for many, each change in a record of its own. `observed` is false when one of them
    /// does not exist; the others are observed.
    CallStatus observeListData(const std::vector<std::string>& tags, bool& observed);
    /// Takes one observation back. `stopped` is true also when there was none; false for a
    /// collection, whose items are given up one by one, and for what is no item.
    CallStatus stopObservingData(const std::string& tag, bool& stopped);

    /// Says that items of this process have changed to the values in the record; it needs no agent.
    /// On eDone `observers` is the number of messages that this made, and the record is the
    /// answer: it carries a refusal, and nobody was told, when it could not be passed on.
    CallStatus manageableDataChanged(ManageableData& record, int& observers);

    // -- serving the agent ---------------------------------------------------------------------

    /// Serves what has come from the service, and waits at most `timeout` for something to come.
    /// eDone: something was served; eTimedOut: nothing came; eDisconnected. From a call of the
    /// agent it does nothing and answers eTimedOut.
    CallStatus serve(std::chrono::milliseconds timeout);
    /// Serves until `stopServing` is called (eDone) or the connection ends (eDisconnected).
    CallStatus serveUntilStopped();
    /// Ends `serveUntilStopped` and the library's thread, for good, also one that has not begun
    /// yet. From any thread, from the agent, and from a signal handler.
    void stopServing() noexcept;
    /// Lets a thread of the library serve, to the end of the client or of the connection. Calling
    /// it again does nothing. False when the system gives no thread.
    bool startServing();
    /// For the poll, epoll or select of an event loop: readable whenever `serve(0)` has something
    /// to do, also when that was received during a call and is in memory already, and at the end of
    /// the connection. It may be readable for nothing when another thread serves or calls. Valid as
    /// long as the client; only to be waited on.
    int pollDescriptor() const;

    /// Makes the service forget the last known values of other owners' items.
    CallStatus invalidateVCMSCache();

    /// The phone's busy mask: a bit for each thing that keeps it busy, 0 when it is idle.
    CallStatus retrievePhoneBusyStatus(unsigned& mask);
    /// Sets, or takes away, the bits of `bits` in it.
    CallStatus setPhoneBusyStatus(unsigned bits);
    CallStatus clearPhoneBusyStatus(unsigned bits);

    /// Sends the generic trap `trap`, 0 to 5, to the receiver `dest` as its items say. `sent` is
    /// false when it could not be sent, or the receiver is switched off or unknown.
    CallStatus raiseGenericTrap(LocalMgmtIfc::TrapDest dest, int trap, bool& sent);
    /// The same with a trap of the phone's own, in the text form of `SNMPTrapData`; `sent` is false
    /// for any other text as well.
    CallStatus raiseSpecificTrap(LocalMgmtIfc::TrapDest dest, const std::string& trapText,
                                 bool& sent);

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

    // -- files from servers; one download at a time ---------------------------------------------

    /// Where a file comes from, as an administrator types it; nothing is encoded.
    struct DownloadSource {
        LocalMgmtIfc::eDownloadProtocol protocol = LocalMgmtIfc::DOWNLOAD_FTP;
        /// Name or address; for HTTPS also a URL, which brings the port and the path's beginning.
        std::string server;
        std::string port;      ///< empty: the usual one
        std::string userName;  ///< empty: nobody in particular
        std::string password;
        std::string sourcePath;  ///< directory on the server; FTP: from "/" or the login directory
        std::string fileName;    ///< in it; its last part is the name that the file gets
    };

    /// Starts a download by the items of the type; the phone is busy with it until it ends.
    /// `started` is false, and nothing is changed, when another one or a burn is under way, when
    /// the settings cannot be used, or when an image is refused during a call.
    CallStatus startDownload(LocalMgmtIfc::eFiletype type, bool& started);
    /// The same without the busy mark; the callback hears of it. It may do so before this has
    /// returned. eNoCallback without one.
    CallStatus startDownloadWithCallback(LocalMgmtIfc::eFiletype type, bool& started);
    /// The same from a given place. With `overrideBusy` an image is fetched during a call, too.
    CallStatus startDownloadFrom(const DownloadSource& source, LocalMgmtIfc::eFiletype type,
                                 bool overrideBusy, bool& started);
    /// Fetches a file from a given place and waits for the end: `fetched` when it is accepted and
    /// in its place, and for an image, when it is being burnt. It needs a timeout (`setTimeout`) as
    /// long as that takes, no callback, and a service that nobody else wants something of: it
    /// serves no other message meanwhile.
    CallStatus fetchFrom(const DownloadSource& source, LocalMgmtIfc::eFiletype type, bool& fetched);
    /// How far the current or last download is, when it is of that type and, unless `fileName` is
    /// empty, of that file: 0 to 100, negative when it failed. -1 when it is another one.
    CallStatus requestCurrentDownloadStatus(LocalMgmtIfc::eFiletype type,
                                            const std::string& fileName, int& percent);
    /// Appends the directory of the current user's files of the type that bears the name `fileType`
    /// in messages, relative to the storage root. `known` is false when the type has none.
    CallStatus getFilePathFromType(const std::string& fileType, std::string& path, bool& known);
    /// Has a file of the current user checked, by its name without directory. What is too large
    /// is deleted; `accepted` is false then, and for sound that cannot be played.
    CallStatus validateFile(LocalMgmtIfc::eFiletype type, const std::string& fileName,
                            bool& accepted);
    /// Has the pictures of the phone book read again.
    CallStatus refreshPictureClips();

    // -- files of users -------------------------------------------------------------------------

    /// The full paths of the current user's files of the type that bears the name `fileType` in
    /// messages, in ascending order. An unknown name counts as the software type.
    CallStatus getListOfFilesOfType(const std::string& fileType, std::list<std::string>& files);
    /// The same of another user.
    CallStatus getListOfFilesOfTypeAndUser(const std::string& fileType,
                                           LocalMgmtIfc::eUsertype user,
                                           std::list<std::string>& files);
    /// Deletes a file of the current user, by its name without directory; one that the phone was
    /// deployed with is only hidden from him. `deleted` is false, and nothing is changed, when it
    /// is not there or cannot be deleted.
    CallStatus deleteFile(LocalMgmtIfc::eFiletype type, const std::string& fileName, bool& deleted);
    /// Deletes all files of one type of a user and gives back the deployed ones. `cleaned` is false
    /// for types that are not cleaned so.
    CallStatus cleanupUserData(const std::string& fileType, LocalMgmtIfc::eUsertype user,
                               bool& cleaned);
    /// Makes another user the current one. `userType` is the name that he bears in messages, such
    /// as "visitorUser"; any other stands for the phone's own user.
    CallStatus changeCurrentUser(const std::string& userType, bool& changed);
    /// Clears the area of the visitor who moves between phones.
    CallStatus clearMobileUserData(bool& cleared);
    /// What the storage is that the files are on: its identity, and a name for people.
    CallStatus getIDAndDisplayName(std::string& id, std::string& displayName);
    /// How much room there is for files; both numbers are 0 when the service cannot find it out.
    CallStatus getUserDataSpaceInfo(MemoryInfo& info);

    // -- maintenance ---------------------------------------------------------------------------

    /// Deletes what was downloaded, the users' files and the network settings, if `password` is the
    /// right one. `rebootStarted` is false both when the password was refused, which changes
    /// nothing, and when the phone was reset and needs no reboot.
    CallStatus performFactoryReset(const std::string& password, bool& rebootStarted);
    /// Reboots the phone; the reason is recorded. The answer comes before the connection ends.
    CallStatus performReboot(const std::string& reason, bool& started);
    /// Has every owner reset the user's data, and resets the files of the current user.
    /// `lastOwnerDid` is what the owner that was asked last has answered; false when there is none.
    CallStatus clearAllUserData(bool& lastOwnerDid);

private:
    LocalMgmtClient(std::unique_ptr<ClientSession> session, Protocol protocol);

    CallStatus askForAgent(const Method& request, bool& result);
    CallStatus sendBusyBits(const char* methodName, unsigned bits);
    CallStatus start(const Method& request, bool& started);
    CallStatus askAboutFile(const char* methodName, LocalMgmtIfc::eFiletype type,
                            const std::string& fileName, bool& result);
    CallStatus askForFiles(Method request, std::list<std::string>& files);

    const std::unique_ptr<MethodCalls> m_calls;  // outlives the session, whose thread may call
    const std::unique_ptr<ClientSession> m_session;
};

}  // namespace vireo
