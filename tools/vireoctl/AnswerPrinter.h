#pragma once

#include <list>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "LocalMgmtClient.h"
#include "data/RejectionSpec.h"
#include "service/Method.h"

namespace vireo {

/// Items with their values, in order.
using ItemValues = std::vector<std::pair<std::string, std::string>>;

/// What came of reading or writing items.
struct RecordAnswer {
    bool result = false;
    ItemValues items;  ///< those read or written
    std::vector<RejectionSpec> refusals;
    std::vector<std::string> remarks;  ///< lines for a person about the rest
};

/// How a download goes on.
struct DownloadNews {
    enum eWhat {
        eStarted,  ///< without waiting for it
        eRefused,
        eFetching,
        eBurning,  ///< a software image, after it was fetched
        eDone,
        eFailed,
        eLeft,  ///< it goes on without this program
        eLost,  ///< the connection ended
    };

    eWhat what = eFetching;
    std::string type;  ///< name of the file type
    int percent = 0;   ///< of eFetching and eBurning
    std::string path;  ///< of eDone
};

/// Writes the service's answers for the reader of the program's output. The streams are not owned
/// and outlive the printer.
class AnswerPrinter {
public:
    AnswerPrinter(std::ostream& out, std::ostream& errors) : m_out(out), m_errors(errors) {}
    virtual ~AnswerPrinter() = default;

    virtual void record(const RecordAnswer& answer) = 0;
    virtual void method(const Method& reply) = 0;
    /// The answer of `methodName` with its only parameter, which a person reads as it is.
    virtual void text(const std::string& methodName, const std::string& parameterName,
                      const std::string& value) = 0;
    virtual void busyStatus(unsigned mask) = 0;
    /// Whether the trap that `methodName` raised was sent.
    virtual void trap(const std::string& methodName, bool sent) = 0;
    virtual void limits(const LocalMgmtClient::FileTypeLimits& limits) = 0;
    /// How far a download of `type` is, as `requestCurrentDownloadStatus` answers.
    virtual void downloadStatus(const std::string& type, int percent) = 0;
    /// Whether a file of `type` passed its check.
    virtual void validation(const std::string& type, const std::string& name, bool accepted) = 0;
    /// Full paths.
    virtual void files(const std::list<std::string>& paths) = 0;
    /// Whether a file of `type` was deleted.
    virtual void deletion(const std::string& type, const std::string& name, bool deleted) = 0;
    /// What the storage is, and how much room it has.
    virtual void space(const std::string& id, const std::string& displayName,
                       const MemoryInfo& info) = 0;
    /// The items about the phone's software.
    virtual void software(const RecordAnswer& answer) = 0;
    /// The answer of `methodName` that is yes or no; `text` says it to a person.
    virtual void outcome(const std::string& methodName, bool result, const std::string& text) = 0;
    virtual void emptyReply() = 0;

    // As it happens: what follows is written out at once.

    /// Items that changed, as one record told.
    virtual void changed(const ItemValues& items) = 0;
    /// This process serves the items of a management id.
    virtual void serving(const std::string& managementId, const std::string& channelName) = 0;
    /// It was asked for something other than writing, such as "get"; `tags` is of what.
    virtual void asked(const std::string& what, const std::vector<std::string>& tags) = 0;
    virtual void askedToWrite(const ItemValues& items) = 0;
    /// It has announced a change, which made so many messages to observers.
    virtual void announced(const std::string& tag, const std::string& value, int observers) = 0;
    virtual void download(const DownloadNews& news) = 0;

protected:
    std::ostream& m_out;
    std::ostream& m_errors;  ///< refusals and remarks, where they have no place in the answer
};

}  // namespace vireo
