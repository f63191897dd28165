#include <algorithm>
#include <memory>
#include <sstream>
#include <string>

#include "Fuzz.h"
#include "data/ManageableData.h"
#include "messages/LocalMgmtInvoker.h"
#include "messages/RpcAdapter.h"
#include "messages/ServiceXmlAdapter.h"
#include "service/Context.h"
#include "service/VireoClientMgmt.h"
#include "store/SqliteDataAccess.h"
#include "support/SmallPhone.h"
#include "support/TemporaryDirectory.h"

namespace vireo::fuzz {
namespace {

constexpr const char* kRecord = "manageableData";
// A byte that no record can carry stands between the messages of one input.
constexpr char kSeparator = '\x1e';

struct PhoneContext : SvcRTEContext {
    Executable* findService(const std::string& name) override {
        return name == "DataAccessServiceIfc" ? store.get() : nullptr;
    }
    void postToMessageThread(std::function<void()> task) override { task(); }
    TimerFacility* timers() override { return nullptr; }
    std::unique_ptr<SqliteDataAccess> store;
};

struct OneReply : InvokerResponse {
    explicit OneReply(const char* protocol) : name(protocol) {}
    const std::string& protocol() const override { return name; }
    void send() override { ++sends; }
    void setPayload(const char* text, int length) override {
        payload.assign(text, static_cast<std::size_t>(length));
    }
    std::string name;
    std::string payload;
    int sends = 0;
};

struct Framework : FrameworkContext {
    ProtocolAdapter* findProtocolAdapter(const std::string& protocol) override {
        if (protocol == VireoProtocols::SERVICE_XML) {
            return &xml;
        }
        return protocol == VireoProtocols::DEFAULT ? &rpc : nullptr;
    }
    Executable* findPeerProxy(const std::string&) override { return nullptr; }

    RpcAdapter rpc;
    ServiceXmlAdapter xml;
};

/// The whole service on a small phone with its store. It lives on from input to input.
class Phone {
public:
    Phone() {
        test::installSmallPhone(m_ports);
        std::string error;
        m_context.store =
            SqliteDataAccess::open(m_directory.file("store.db"),
                                   *StoreCatalogue::parse(test::smallPhoneStore(), error), error);
        require(m_context.store != nullptr, error.c_str());
        m_service.init(m_context);
        m_invoker.initInvoker(&m_framework);
    }

    /// Sends a message of any bytes and answers the decoded reply; unnamed when it was empty.
    Method send(std::string_view message, const char* protocol = VireoProtocols::DEFAULT) {
        m_ports.forgetLines();
        OneReply reply(protocol);
        m_invoker.handleMessage(&m_service, message.data(), static_cast<int>(message.size()),
                                &reply);
        require(reply.sends == 1, "every message gets exactly one reply");
        Method decoded("", Method::eResponse);
        std::istringstream in(reply.payload);
        require(
            reply.payload.empty() || m_framework.findProtocolAdapter(protocol)->decode(in, decoded),
            "a reply can be read");
        require(decoded.type() == Method::eResponse, "a reply is a response");
        return decoded;
    }

    Method call(const Method& request) {
        std::string message;
        RpcAdapter::encodeText(request, message);
        Method reply = send(message);
        require(reply.name() == request.name(), "what is well-formed gets a proper reply");
        return reply;
    }

private:
    test::TestPorts m_ports;  // at the level of whole records: the log lines are formatted as well
    test::TemporaryDirectory m_directory;
    PhoneContext m_context;
    Framework m_framework;
    VireoClientMgmt m_service;
    LocalMgmtInvoker m_invoker;
};

Method requestWith(const char* name, const char* parameter, Parameter::directions direction,
                   std::string text) {
    Method request(name, Method::eRequest);
    request.addStringParameter(parameter, direction, std::move(text));
    return request;
}

/// Sends a record; answers the result and the record of the reply.
bool exchangeRecord(Phone& phone, const char* method, std::string text, ManageableData& answer) {
    const Method reply =
        phone.call(requestWith(method, kRecord, Parameter::eInOut, std::move(text)));
    require(answer.deserialize(reply.getStringParameter(kRecord, Parameter::eOut)),
            "the record of a reply can be read");
    return reply.getBoolParameter("result", Parameter::eOut);
}

/// Writes a record; what was acknowledged has to be there.
void write(Phone& phone, std::string_view text) {
    ManageableData sent;
    const bool isRecord = sent.deserialize(std::string(text));
    ManageableData answer;
    const bool isWritten = exchangeRecord(phone, "setData", std::string(text), answer);
    require(isRecord || !isWritten, "what is no record is not written");
    for (const char* tag : {"melody", "volume", "key-1", "lazy", "lazy-2", "software-type"}) {
        const auto& tags = sent.rootIds();
        const DxlDocumentPointer document = sent.getDocument(tag);
        if (!isWritten || !document || std::find(tags.begin(), tags.end(), tag) == tags.end()) {
            continue;
        }
        ManageableData wanted;
        wanted.setRootId(tag, nullptr);
        ManageableData read;
        std::string value;
        require(exchangeRecord(phone, "getData", wanted.serialize(), read) &&
                    read.interogate(tag, tag, value) && value == document->root()->text(),
                "what was acknowledged is read back");
    }
}

/// One message: what kind it is, and its content.
void sendOne(Phone& phone, std::string_view message) {
    const char kind = static_cast<char>(takeChoice(message));
    ManageableData answer;
    switch (kind) {
        case 's':
            write(phone, message);
            break;
        case 'g':
            exchangeRecord(phone, "getData", std::string(message), answer);
            break;
        case 'f':
            phone.call(
                requestWith("findSchemaName", "nodeId", Parameter::eIn, std::string(message)));
            break;
        case 'e':
            phone.call(
                requestWith("exportSchema", "schemaName", Parameter::eIn, std::string(message)));
            break;
        case 'c':
            phone.call(
                requestWith("getSchema", "schemaName", Parameter::eIn, std::string(message)));
            break;
        case 'x':
            phone.send(message, VireoProtocols::SERVICE_XML);
            break;
        default:
            phone.send(message);
    }
}

}  // namespace

/// Messages, one after the other. The first byte of each: 's', 'g' a record to write or to read,
/// 'f', 'e', 'c' the text of a schema question, 'x' an XML message; anything else: the message
/// itself.
void run(std::string_view input) {
    static Phone phone;
    for (std::size_t end = 0; end != std::string_view::npos;) {
        end = input.find(kSeparator);
        sendOne(phone, input.substr(0, end));
        input.remove_prefix(end == std::string_view::npos ? input.size() : end + 1);
    }
    const Method reply =
        phone.call(requestWith("findSchemaName", "nodeId", Parameter::eIn, "melody"));
    require(reply.getStringParameter("schemaName", Parameter::eOut) == "text",
            "the next message is served as ever");
}

}  // namespace vireo::fuzz
