#include <sys/stat.h>
#ifdef VIREO_SYSTEMD
#include <systemd/sd-daemon.h>
#endif

#include <csignal>
#include <cstdio>
#include <optional>
#include <string>

#include "HostProcess.h"
#include "SetPassword.h"
#include "check/CheckConfiguration.h"
#include "options/HostOptions.h"

namespace {

constexpr int kStopped = 0;
constexpr int kCannotStart = 1;
constexpr int kReboot = 10;  // for the supervisor, who starts it again

/// The signals that end the service. Blocked before any thread starts, so that all threads inherit
/// it and the main thread alone takes them.
sigset_t blockStopSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGHUP);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signals;
}

/// Tells the supervisor, where there is one, how far the process is.
void notifySupervisor([[maybe_unused]] const char* state) {
#ifdef VIREO_SYSTEMD
    sd_notify(0, state);
#endif
}

int serve(const vireo::HostOptions& options, const sigset_t& stopSignals) {
    vireo::HostProcess process;
    std::string error;
    if (!process.start(options, error)) {
        std::fprintf(stderr, "vireod: cannot start: %s\n", error.c_str());
        return kCannotStart;
    }
    std::printf("vireod: ready on %s (%zu peers at most)\n", options.socket.c_str(),
                options.messages.maximumPeers);
    std::fflush(stdout);
    notifySupervisor("READY=1");
    int signal = 0;
    sigwait(&stopSignals, &signal);
    if (!process.requestShutdown()) {
        sigwait(&stopSignals, &signal);
    }
    notifySupervisor("STOPPING=1");
    process.stop();
    return process.failed() ? kCannotStart : process.isRebooting() ? kReboot : kStopped;
}

}  // namespace

int main(int argc, char** argv) {
    const sigset_t stopSignals = blockStopSignals();
    signal(SIGPIPE, SIG_IGN);
    // What the service writes, its log among it, is nobody else's business.
    umask(0077);
    int exitCode = 0;
    const std::optional<vireo::HostOptions> options =
        vireo::HostOptions::parse(argc, argv, exitCode);
    if (options && options->isCheck) {
        return vireo::checkConfiguration(*options);
    }
    if (options && !options->passwordToSet.empty()) {
        return vireo::setPassword(*options);
    }
    return options ? serve(*options, stopSignals) : exitCode;
}
