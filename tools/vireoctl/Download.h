#pragma once

#include <chrono>
#include <optional>
#include <ostream>
#include <string>

#include "AnswerPrinter.h"
#include "ExitCode.h"
#include "LocalMgmtCallbackIfc.h"
#include "LocalMgmtClient.h"

namespace vireo {

class StopSignal;

/// The command that has a file fetched and prints how that goes on, up to the end of the burn when
/// it is a software image.
class Download : private LocalMgmtCallbackIfc {
public:
    struct Options {
        std::string type;  ///< the name of a file type
        /// Where the file comes from; none: as the phone's items say.
        std::optional<LocalMgmtClient::DownloadSource> source;
        bool overrideBusy = false;  ///< only with a source
        bool wait = true;
    };

    /// All but the options outlives this.
    Download(Options options, AnswerPrinter& printer, std::ostream& errors);

    /// Connects, starts the download, and follows it to its end or to a signal, which leaves it
    /// going on.
    ExitCode run(LocalMgmtClient::Options connection, const StopSignal& stop);

private:
    enum class State { eFetching, eFetched, eBurning, eDone, eFailed };

    bool requestShutdown() override;
    bool informDownloadProgress(int progress, std::string filepath) override;
    bool informDownloadCompletion(std::string filepath) override;

    bool start(LocalMgmtClient& client);
    void forgetEarlierEnd(LocalMgmtClient& client);
    void follow(LocalMgmtClient& client, const StopSignal& stop);
    void leave();
    void show(DownloadNews::eWhat what);
    void showState();
    void showPercent(State state, int percent);
    void finish(State state);
    bool hasEnded() const { return m_state == State::eDone || m_state == State::eFailed; }
    void fail(const LocalMgmtClient& client, CallStatus status);

    const Options m_options;
    const LocalMgmtIfc::eFiletype m_type;
    AnswerPrinter& m_printer;
    std::ostream& m_errors;
    std::chrono::milliseconds m_timeout{};
    State m_state = State::eFetching;
    int m_percent = 0;
    std::string m_path;
    bool m_isStarted = false;  // the service has said so; what is told before may be of another one
    unsigned m_ends = 0;       // how many were told
    ExitCode m_code = ExitCode::eDone;
};

}  // namespace vireo
