// Publishes how a call sounded, as who measures it does at the end of a period: one block of
// statistics of the first voice channel, which becomes one trap.
#include <cstdio>

#include "LocalMgmtClient.h"

using namespace vireo;

int main(int argc, char** argv) {
    LocalMgmtClient::Options options;
    options.socketPath = argc > 1 ? argv[1] : "/run/vireo/vireo.sock";
    options.channelName = "quality-meter";
    std::string error;
    const auto client = LocalMgmtClient::connect(options, error);
    const std::string channel = "qdc-qos-statistics1";
    ManageableData block;
    bool hasSchema = false;
    if (!client || client->getSchema("qos-statistics", block, hasSchema) != CallStatus::eDone ||
        !hasSchema) {
        std::fprintf(stderr, "no statistics here %s\n", error.c_str());
        return 1;
    }
    block.addRootId(channel, nullptr);
    block.makeDocument("qos-statistics", channel);  // what is not set below is 0 or empty
    block.populate(channel, "qdc-specific-trap-type", "2");
    block.populate(channel, "qdc-local-ip", "192.0.2.7");
    block.populate(channel, "qdc-local-port", "5010");
    block.populate(channel, "qdc-good-packets", "2990");
    block.populate(channel, "qdc-lost-packets", "10");
    block.populate(channel, "qdc-call-id", "call-17");
    int observers = 0;
    if (client->manageableDataChanged(block, observers) != CallStatus::eDone) {
        std::fprintf(stderr, "%s\n", client->closeReason().c_str());
        return 1;
    }
    std::printf("told %d\n", observers);
    return 0;
}
