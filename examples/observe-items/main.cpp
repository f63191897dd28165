// Prints every change of the items that are named on the command line, until Ctrl-C.
#include <csignal>
#include <cstdio>

#include "LocalMgmtClient.h"

using namespace vireo;

class Printer : public MgmtAgentIfc {
    bool manageableDataChanged(ManageableData& record) override {
        for (const std::string& tag : record.rootIds()) {
            std::string value;
            if (record.interogate(tag, tag, value)) {
                std::printf("%s is now %s\n", tag.c_str(), value.c_str());
            }
        }
        std::fflush(stdout);
        return true;
    }
    bool getData(ManageableData&) override { return false; }
    bool setData(ManageableData&) override { return false; }
    bool resetUserData() override { return true; }
};

namespace {
LocalMgmtClient* g_running = nullptr;  // for the signal handler
}

int main(int argc, char** argv) {
    Printer printer;
    LocalMgmtClient::Options options;
    options.socketPath = argc > 1 ? argv[1] : "/run/vireo/vireo.sock";
    options.channelName = "printer";
    options.agent = &printer;
    std::string error;
    const auto client = LocalMgmtClient::connect(options, error);
    if (!client) {
        std::fprintf(stderr, "%s\n", error.c_str());
        return 1;
    }
    for (int i = 2; i < argc; ++i) {
        bool observed = false;
        if (client->observeData(argv[i], true, observed) != CallStatus::eDone || !observed) {
            std::fprintf(stderr, "%s cannot be observed\n", argv[i]);
        }
    }
    g_running = client.get();
    std::signal(SIGINT, [](int) { g_running->stopServing(); });
    const bool isStopped = client->serveUntilStopped() == CallStatus::eDone;
    for (int i = 2; i < argc; ++i) {
        bool stopped = false;
        client->stopObservingData(argv[i], stopped);
    }
    return isStopped ? 0 : 1;
}
