// Owns the number of the virtual network: keeps it in memory, answers reads and takes writes.
#include <cstdio>

#include "LocalMgmtClient.h"

using namespace vireo;

class VlanOwner : public MgmtAgentIfc {
    bool getData(ManageableData& record) override {
        return record.getRootId() == "vlan-id" && record.populate("vlan-id", m_number);
    }
    bool setData(ManageableData& record) override {
        return record.interogate("vlan-id", "vlan-id", m_number);
    }
    bool manageableDataChanged(ManageableData&) override { return true; }
    bool resetUserData() override { return true; }

    std::string m_number = "100";
};

int main(int argc, char** argv) {
    VlanOwner owner;
    LocalMgmtClient::Options options;
    options.socketPath = argc > 1 ? argv[1] : "/run/vireo/vireo.sock";
    options.channelName = "vlan-owner";
    options.agent = &owner;
    std::string error;
    const auto client = LocalMgmtClient::connect(options, error);
    bool registered = false;
    if (!client || client->registerManagementIdentity("NetworkMgmtId", false, registered) !=
                       CallStatus::eDone) {
        std::fprintf(stderr, "%s\n", client ? client->closeReason().c_str() : error.c_str());
        return 1;
    }
    std::printf("%s\n", registered ? "registered" : "registered before");
    std::fflush(stdout);
    return client->serveUntilStopped() == CallStatus::eDone ? 0 : 1;
}
