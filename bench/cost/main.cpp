// Serves one kind of request a number of times in this process, without sockets: for counting
// instructions, which no other load on the machine changes. See scripts/request-cost.

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "data/ManageableData.h"
#include "harness/Failure.h"
#include "harness/PhoneConfiguration.h"
#include "harness/ScratchDirectory.h"
#include "log/Log.h"
#include "messages/LocalMgmtInvoker.h"
#include "messages/MgmtAgentProxy.h"
#include "messages/RpcAdapter.h"
#include "messages/ServiceXmlAdapter.h"
#include "runtime/ConfigDirectory.h"
#include "service/Context.h"
#include "service/VireoClientMgmt.h"
#include "store/SqliteDataAccess.h"

namespace {

std::size_t g_allocations = 0;

}  // namespace

// What the libraries allocate in C++ passes here as well.
void* operator new(std::size_t size) {
    ++g_allocations;
    if (void* memory = std::malloc(size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}

namespace vireo::bench {
namespace {

constexpr const char* kRecord = "manageableData";

struct Runtime : SvcRTEContext {
    Executable* findService(const std::string& name) override {
        return name == "DataAccessServiceIfc" ? store.get() : nullptr;
    }
    void postToMessageThread(std::function<void()> task) override { task(); }
    TimerFacility* timers() override { return nullptr; }
    std::unique_ptr<SqliteDataAccess> store;
};

/// A peer that takes everything it is sent.
struct Peer : ProxyRequest {
    Peer() { proxy.initProxy(*this); }
    const std::string& interface() const override { return name; }
    const std::string& destinationChannelName() const override { return name; }
    Service* findDirectService() override { return nullptr; }
    void setProtocol(const std::string& /*protocol*/) override {}
    void setMsgType(int /*type*/) override {}
    bool sendAndWait(const std::string& message, std::string& reply, int /*timeout*/) override {
        const std::size_t colon = message.find(':') + 1;
        reply = message.substr(0, colon) + "1;" + message.substr(colon);
        return true;
    }
    bool sendOneWay(const std::string& message) override { return !message.empty(); }
    bool sendMethod(const Method& /*method*/) override { return true; }

    std::string name = "peer";
    MgmtAgentProxy proxy;
};

struct Framework : FrameworkContext {
    ProtocolAdapter* findProtocolAdapter(const std::string& protocol) override {
        return protocol == VireoProtocols::SERVICE_XML ? static_cast<ProtocolAdapter*>(&xml) : &rpc;
    }
    Executable* findPeerProxy(const std::string& /*interface*/) override { return sender; }
    RpcAdapter rpc;
    ServiceXmlAdapter xml;
    Executable* sender = nullptr;
};

struct Reply : InvokerResponse {
    explicit Reply(const char* protocol) : name(protocol) {}
    const std::string& protocol() const override { return name; }
    void send() override {}
    void setPayload(const char* text, int length) override {
        payload.assign(text, static_cast<std::size_t>(length));
    }
    std::string name;
    std::string payload;
};

/// The service, its store and its message side on a phone of 1,000 items.
class Served {
public:
    explicit Served(const char* protocol) : m_reply(protocol) {
        PhoneConfiguration(1000).write(m_files.file("config"));
        m_config = std::make_unique<ConfigDirectory>(m_files.file("config"));
        installPorts({nullptr, m_config.get()});
        setLogLevel(kLogWarning);  // as vireod does unless it is told otherwise
        std::string text;
        std::string error;
        require(m_config->readConfigFile("store.xml", text, error), "no catalogue of the store");
        m_runtime.store = SqliteDataAccess::open(m_files.file("store.db"),
                                                 *StoreCatalogue::parse(text, error), error);
        require(m_runtime.store != nullptr, "no store");
        m_service.init(m_runtime);
        m_invoker.initInvoker(&m_framework);
    }

    std::string request(const char* method, const ManageableData& record) {
        Method request(method, Method::eRequest);
        request.addStringParameter(kRecord, Parameter::eInOut, record.serialize());
        std::string text;
        if (m_reply.name == VireoProtocols::SERVICE_XML) {
            ServiceXmlAdapter::encodeText(request, text);
        } else {
            RpcAdapter::encodeText(request, text);
        }
        return text;
    }
    const std::string& send(const std::string& message) {
        m_invoker.handleMessage(&m_service, message.data(), static_cast<int>(message.size()),
                                &m_reply);
        require(!m_reply.payload.empty(), "no reply");
        return m_reply.payload;
    }
    LocalMgmtIfc& service() { return m_service; }

private:
    ScratchDirectory m_files{std::filesystem::temp_directory_path()};
    std::unique_ptr<ConfigDirectory> m_config;
    Runtime m_runtime;
    Framework m_framework;
    Reply m_reply;
    VireoClientMgmt m_service;
    LocalMgmtInvoker m_invoker;
};

ManageableData recordOf(const std::vector<std::string>& tags, const char* value) {
    ManageableData record;
    for (const std::string& tag : tags) {
        if (value == nullptr) {
            record.addRootId(tag, nullptr);
        } else {
            require(record.populate(tag, std::string(200, *value)), "no value");
        }
    }
    return record;
}

struct Kind {
    const char* name;
    const char* protocol;
    std::vector<std::string> tags;
    bool isWrite;
    int observers;
    bool isOwned;
};

std::vector<Kind> kinds() {
    constexpr const char* kRpc = VireoProtocols::DEFAULT;
    std::vector<std::string> ten;
    for (std::size_t i = 0; i < 10; ++i) {
        ten.push_back(PhoneConfiguration::storedTag(i));
    }
    std::vector<std::string> hundred;
    for (std::size_t i = 0; i < 100; ++i) {
        hundred.push_back(PhoneConfiguration::storedTag(i));
    }
    const std::string stored = PhoneConfiguration::storedTag(0);
    const std::string keyed = PhoneConfiguration::storedTag(410);
    const std::string memory = PhoneConfiguration::memoryTag(0);
    const std::string owned = PhoneConfiguration::ownedTag(0);
    return {
        {"read-stored", kRpc, {stored}, false, 0, false},
        {"read-keyed", kRpc, {keyed}, false, 0, false},
        {"read-memory", kRpc, {memory}, false, 0, false},
        {"read-owned", kRpc, {owned}, false, 0, true},
        {"read-ten", kRpc, ten, false, 0, false},
        {"read-xml", VireoProtocols::SERVICE_XML, {stored}, false, 0, false},
        {"write-memory", kRpc, {memory}, true, 0, false},
        {"write-stored", kRpc, {stored}, true, 0, false},
        {"write-hundred", kRpc, hundred, true, 0, false},
        {"write-observed", kRpc, {memory}, true, 1, false},
        {"write-observed-by-ten", kRpc, {memory}, true, 10, false},
    };
}

void run(const Kind& kind, int count) {
    Served served(kind.protocol);
    std::vector<std::unique_ptr<Peer>> peers;
    for (int i = 0; i < kind.observers; ++i) {
        peers.push_back(std::make_unique<Peer>());
        served.service().observeManageableData(kind.tags.front(), &peers.back()->proxy, false);
    }
    const std::string first = served.request("setData", recordOf(kind.tags, "a"));
    served.send(first);
    Peer owner;
    if (kind.isOwned) {
        served.service().registerManagementIdentity(PhoneConfiguration::kOwnerId, &owner.proxy,
                                                    false);
    }
    const std::string other = kind.isWrite
                                  ? served.request("setData", recordOf(kind.tags, "b"))
                                  : served.request("getData", recordOf(kind.tags, nullptr));
    const std::string& even = kind.isWrite ? first : other;
    const std::size_t before = g_allocations;
    std::size_t bytes = 0;
    for (int i = 0; i < count; ++i) {
        bytes += served.send(i % 2 == 0 ? other : even).size();
    }
    std::printf("%zu %zu\n", g_allocations - before, bytes);
}

}  // namespace
}  // namespace vireo::bench

/// Usage: vireo_request_cost NAME COUNT   Prints the number of allocations, and of bytes answered.
int main(int argc, char** argv) {
    try {
        for (const auto& kind : vireo::bench::kinds()) {
            if (argc == 1) {
                std::puts(kind.name);
            } else if (argc == 3 && kind.name == std::string_view(argv[1])) {
                vireo::bench::run(kind, std::atoi(argv[2]));
                return 0;
            }
        }
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "%s\n", exception.what());
        return 1;
    }
    return argc == 1 ? 0 : 2;
}
