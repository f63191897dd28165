// Has the phone fetch the ringer that its settings name, and follows it to the end.
#include <chrono>
#include <cstdio>

#include "LocalMgmtClient.h"

using namespace vireo;

class Follower : public LocalMgmtCallbackIfc {
public:
    bool isOver = false;
    bool isFetched = false;

private:
    bool informDownloadProgress(int percent, std::string) override {
        std::printf("%d\n", percent);
        isOver = percent < 0;
        return true;
    }
    bool informDownloadCompletion(std::string path) override {
        std::printf("%s\n", path.c_str());
        isOver = isFetched = true;
        return true;
    }
    bool requestShutdown() override { return true; }  // it can be fetched again
};

int main(int argc, char** argv) {
    Follower follower;
    LocalMgmtClient::Options options;
    options.socketPath = argc > 1 ? argv[1] : "/run/vireo/vireo.sock";
    options.channelName = "ringer-fetcher";
    options.callback = &follower;
    std::string error;
    const auto client = LocalMgmtClient::connect(options, error);
    bool started = false;
    if (!client ||
        client->startDownloadWithCallback(LocalMgmtIfc::FILETYPE_RINGER, started) !=
            CallStatus::eDone ||
        !started) {
        std::fprintf(stderr, "not started %s\n", error.c_str());
        return 1;
    }
    CallStatus status = CallStatus::eDone;
    while (!follower.isOver && status != CallStatus::eDisconnected) {
        status = client->serve(std::chrono::seconds(60));
    }
    return follower.isFetched ? 0 : 1;
}
