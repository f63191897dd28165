#include "Download.h"

#include <poll.h>

#include <memory>
#include <utility>

#include "CallFailure.h"
#include "FileTypes.h"
#include "terminal/StopSignal.h"

namespace vireo {
namespace {

using std::chrono::milliseconds;

constexpr int kBurnt = 99;
constexpr int kComplete = 100;

}  // namespace

Download::Download(Options options, AnswerPrinter& printer, std::ostream& errors)
    : m_options(std::move(options)),
      m_type(FileTypes::find(m_options.type)),
      m_printer(printer),
      m_errors(errors) {}

ExitCode Download::run(LocalMgmtClient::Options connection, const StopSignal& stop) {
    connection.callback = this;
    m_timeout = connection.timeout;
    std::string error;
    const std::unique_ptr<LocalMgmtClient> client = LocalMgmtClient::connect(connection, error);
    if (!client) {
        m_errors << "vireoctl: " << error << '\n';
        return ExitCode::eNotReached;
    }
    if (start(*client)) {
        follow(*client, stop);
    }
    return m_code;
}

// False when there is nothing to follow.
bool Download::start(LocalMgmtClient& client) {
    bool isStarted = false;
    CallStatus status{};
    if (m_options.source) {
        status =
            client.startDownloadFrom(*m_options.source, m_type, m_options.overrideBusy, isStarted);
    } else if (m_options.wait) {
        status = client.startDownloadWithCallback(m_type, isStarted);
    } else {
        status = client.startDownload(m_type, isStarted);
    }
    if (status != CallStatus::eDone) {
        fail(client, status);
    } else if (!isStarted) {
        show(DownloadNews::eRefused);
        m_errors << "vireoctl: not started: another download may be under way, the settings may be "
                    "incomplete, or a call holds up a software update; the log of the service says "
                    "why\n";
        m_code = ExitCode::eRefused;
    } else if (!m_options.wait) {
        show(DownloadNews::eStarted);
    } else {
        if (hasEnded()) {
            forgetEarlierEnd(client);
        }
        m_isStarted = true;
        showState();
        return true;
    }
    return false;
}

// The end of a download that an earlier process of this channel name left going on may be told just
// when this one starts. A small file may have come meanwhile, too.
void Download::forgetEarlierEnd(LocalMgmtClient& client) {
    const unsigned ends = m_ends;
    int percent = 0;
    if (client.requestCurrentDownloadStatus(m_type, {}, percent) == CallStatus::eDone &&
        percent >= 0 && percent < kComplete && m_ends == ends) {
        m_state = State::eFetching;
        m_percent = percent;
        m_path.clear();
    }
}

void Download::follow(LocalMgmtClient& client, const StopSignal& stop) {
    constexpr int kForEver = -1;
    while (!hasEnded()) {
        pollfd waited[] = {{client.pollDescriptor(), POLLIN, 0}, {stop.descriptor(), POLLIN, 0}};
        if (::poll(waited, 2, kForEver) < 0) {
            continue;
        }
        if (waited[1].revents != 0) {
            leave();
            return;
        }
        if (client.serve(milliseconds::zero()) == CallStatus::eDisconnected && !hasEnded()) {
            show(DownloadNews::eLost);
            fail(client, CallStatus::eDisconnected);
            return;
        }
    }
}

void Download::leave() {
    show(DownloadNews::eLeft);
    m_errors << "vireoctl: the download goes on; 'vireoctl download-status " << m_options.type
             << "' says how far it is\n";
    m_code = ExitCode::eRefused;
}

// A transfer can be made again; a burn should not be cut short.
bool Download::requestShutdown() {
    return m_state != State::eBurning && m_state != State::eFetched;
}

bool Download::informDownloadProgress(int progress, std::string /*filepath*/) {
    if (m_isStarted && hasEnded()) {
        return true;
    }
    if (progress < 0) {
        finish(State::eFailed);
    } else if (m_state == State::eFetched || m_state == State::eBurning) {
        progress < kBurnt ? showPercent(State::eBurning, progress) : finish(State::eDone);
    } else {
        showPercent(State::eFetching, progress);
    }
    return true;
}

bool Download::informDownloadCompletion(std::string filepath) {
    if (m_isStarted && hasEnded()) {
        return true;
    }
    m_path = std::move(filepath);
    if (m_type != LocalMgmtIfc::FILETYPE_SOFTWARE) {
        finish(State::eDone);
        return true;
    }
    m_state = State::eFetched;  // whether it can be burnt shows with the next report
    return true;
}

void Download::showPercent(State state, int percent) {
    if (state != m_state || percent != m_percent) {
        m_state = state;
        m_percent = percent;
        showState();
    }
}

void Download::finish(State state) {
    m_state = state;
    ++m_ends;
    showState();
}

void Download::showState() {
    if (!m_isStarted) {
        return;
    }
    switch (m_state) {
        case State::eFetched:
            break;
        case State::eFetching:
            show(DownloadNews::eFetching);
            break;
        case State::eBurning:
            show(DownloadNews::eBurning);
            break;
        case State::eDone:
            show(DownloadNews::eDone);
            if (m_type == LocalMgmtIfc::FILETYPE_SOFTWARE) {
                m_errors << "vireoctl: the next start of the phone tries the new software, after "
                            "'vireoctl reboot' for instance\n";
            }
            break;
        case State::eFailed:
            show(DownloadNews::eFailed);
            // A file that is too large goes without a log line.
            m_errors << (m_path.empty() ? "vireoctl: the file was not fetched (the log of the "
                                          "service says why), or is too large or not playable\n"
                                        : "vireoctl: the image was fetched, but not burnt; the log "
                                          "of the service says why\n");
            m_code = ExitCode::eRefused;
            break;
    }
}

void Download::show(DownloadNews::eWhat what) {
    m_printer.download({what, m_options.type, m_percent, m_path});
}

void Download::fail(const LocalMgmtClient& client, CallStatus status) {
    const CallFailure failure = CallFailure::of(client, status, m_timeout);
    m_errors << "vireoctl: " << failure.reason << '\n';
    m_code = failure.code;
}

}  // namespace vireo
