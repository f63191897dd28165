#include "harness/Phone.h"

#include "data/ManageableData.h"
#include "harness/Failure.h"
#include "messages/RpcAdapter.h"
#include "service/Method.h"

namespace vireo::bench {
namespace {

constexpr const char* kRecord = "manageableData";

std::string requestText(const char* methodName, const ManageableData& record) {
    Method method(methodName, Method::eRequest);
    method.addStringParameter(kRecord, Parameter::eInOut, record.serialize());
    std::string text;
    RpcAdapter::encodeText(method, text);
    return text;
}

}  // namespace

Phone::Phone(const Places& places, const PhoneConfiguration& configuration)
    : m_files(places.files), m_sockets(places.sockets), m_socket(m_sockets.file("vireo.sock")) {
    configuration.write(m_files.file("config"));
    m_process = Process::run({VIREOD, "--config", m_files.file("config"), "--root",
                              m_files.file("root"), "--socket", m_socket},
                             "vireod: ready on", places.log);
}

std::unique_ptr<LocalMgmtClient> Phone::connect(MgmtAgentIfc* agent,
                                                const std::string& channel) const {
    LocalMgmtClient::Options options;
    options.socketPath = m_socket;
    options.channelName = channel;
    options.agent = agent;
    std::string error;
    auto client = LocalMgmtClient::connect(options, error);
    if (!client) {
        throw Failure(error);
    }
    return client;
}

std::string readRequest(const std::vector<std::string>& tags) {
    ManageableData record;
    for (const std::string& tag : tags) {
        record.addRootId(tag, nullptr);
    }
    return requestText("getData", record);
}

std::string writeRequest(const std::vector<std::string>& tags, const std::string& value) {
    ManageableData record;
    for (const std::string& tag : tags) {
        require(record.populate(tag, value), "a value cannot be put into a record");
    }
    return requestText("setData", record);
}

void requireDone(std::string_view reply) {
    // A response with two parameters, of which the first is the result: true.
    require(reply.starts_with("7;getData1;2;6;result2;1;1;") ||
                reply.starts_with("7;setData1;2;6;result2;1;1;"),
            "the phone refused a request");
}

}  // namespace vireo::bench
