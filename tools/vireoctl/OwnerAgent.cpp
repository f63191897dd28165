#include "OwnerAgent.h"

#include <poll.h>
#include <unistd.h>

#include <csignal>
#include <set>
#include <utility>

#include "CallFailure.h"
#include "data/ManageableData.h"
#include "terminal/StopSignal.h"

namespace vireo {

using std::chrono::milliseconds;

namespace {

constexpr const char* kItemMap = "masterItemMap";
// The items of this one are the service's, which asks nobody for them.
constexpr const char* kServiceId = "VcmsMgmtId";

std::set<std::string> idsIn(const DxlDocument& itemMap) {
    std::set<std::string> ids;
    for (const DxlNode::Pointer& item : itemMap.root()->children()) {
        if (const DxlNode* id = item->child("managementId")) {
            ids.insert(id->text());
        }
    }
    ids.erase(kServiceId);
    return ids;
}

}  // namespace

OwnerAgent::OwnerAgent(Options options, AnswerPrinter& printer, const std::ostream& out,
                       std::ostream& errors, const StopSignal& stop)
    : m_options(std::move(options)),
      m_printer(printer),
      m_out(out),
      m_errors(errors),
      m_stop(stop),
      m_values(m_options.initial, [this](const std::string& tag, ManageableData& record) {
          return findSchema(tag, record);
      }) {
    for (const auto& [tag, reason] : m_options.refusals) {
        m_refusals[tag] = reason;
    }
}

ExitCode OwnerAgent::run(LocalMgmtClient::Options connection, int input) {
    // In the background of a terminal reading fails then, instead of stopping the program.
    std::signal(SIGTTIN, SIG_IGN);
    connection.agent = this;
    m_timeout = connection.timeout;
    std::string error;
    m_client = LocalMgmtClient::connect(connection, error);
    if (!m_client) {
        m_errors << "vireoctl: " << error << '\n';
        return ExitCode::eNotReached;
    }
    if (checkId() && registerAsOwner()) {
        serve(input);
    }
    return m_code;
}

// True also when the service does not tell which ids there are.
bool OwnerAgent::checkId() {
    ManageableData record;
    record.addRootId(kItemMap, nullptr);
    bool result = false;
    const CallStatus status = m_client->getData(record, result);
    const DxlDocumentPointer itemMap =
        status == CallStatus::eDone ? record.getDocument(kItemMap) : nullptr;
    const std::set<std::string> ids = itemMap ? idsIn(*itemMap) : std::set<std::string>();
    if (!itemMap || ids.contains(m_options.managementId)) {
        return true;
    }
    m_errors << "vireoctl: no item that an agent can own has the management id '"
             << m_options.managementId << "'; there are";
    const char* separator = ": ";
    for (const std::string& id : ids) {
        m_errors << std::exchange(separator, ", ") << id;
    }
    m_errors << (ids.empty() ? " none\n" : "\n");
    m_code = ExitCode::eRefused;
    return false;
}

bool OwnerAgent::registerAsOwner() {
    bool registered = false;
    const CallStatus status =
        m_client->registerManagementIdentity(m_options.managementId, m_options.bulk, registered);
    if (status != CallStatus::eDone) {
        fail(status);
        return false;
    }
    if (!registered) {
        m_errors << "vireoctl: warning: " << m_options.managementId
                 << " has an owner already. If that was an earlier process of the name "
                 << m_client->channelName()
                 << ", its registration reaches this one; if not, nothing will." << '\n';
    }
    m_printer.serving(m_options.managementId, m_client->channelName());
    return true;
}

void OwnerAgent::serve(int input) {
    constexpr int kForEver = -1;
    while (m_out) {
        // A descriptor of -1 is not waited for.
        pollfd waited[] = {{m_stop.descriptor(), POLLIN, 0},
                           {m_client->pollDescriptor(), POLLIN, 0},
                           {input, POLLIN, 0}};
        if (::poll(waited, 3, kForEver) < 0) {
            continue;
        }
        if (waited[0].revents != 0) {
            return;
        }
        if (waited[1].revents != 0 &&
            m_client->serve(milliseconds::zero()) == CallStatus::eDisconnected) {
            fail(CallStatus::eDisconnected);
            return;
        }
        if (waited[2].revents != 0 && !readInput(input)) {
            input = -1;
        }
    }
}

// False at the end of the input.
bool OwnerAgent::readInput(int input) {
    char chunk[4096];
    const ssize_t got = ::read(input, chunk, sizeof chunk);
    if (got <= 0) {
        return false;
    }
    m_typed.append(chunk, static_cast<std::size_t>(got));
    std::size_t start = 0;
    for (std::size_t end = 0; (end = m_typed.find('\n', start)) != std::string::npos;
         start = end + 1) {
        announce(m_typed.substr(start, end - start));
    }
    m_typed.erase(0, start);
    return true;
}

void OwnerAgent::announce(const std::string& line) {
    if (line.empty()) {
        return;
    }
    std::string error;
    const auto assignment = Assignment::parse(line, error);
    ManageableData record;
    if (!assignment) {
        m_errors << "vireoctl: " << error << '\n';
    } else if (!m_values.change(*assignment, record)) {
        m_errors << "vireoctl: " << assignment->tag << " cannot have this value" << '\n';
    } else {
        int observers = 0;
        const CallStatus status = m_client->manageableDataChanged(record, observers);
        if (status == CallStatus::eDone) {
            m_printer.announced(assignment->tag, assignment->value, observers);
        } else {
            m_errors << "vireoctl: not announced: "
                     << CallFailure::of(*m_client, status, m_timeout).reason << '\n';
        }
    }
}

// False when the command is to end instead.
bool OwnerAgent::pause() const {
    if (m_options.hang) {
        m_stop.wait();
        return false;
    }
    return m_options.delay <= milliseconds::zero() || !m_stop.wait(m_options.delay);
}

bool OwnerAgent::getData(ManageableData& record) {
    m_printer.asked("get", record.rootIds());
    if (!pause()) {
        return false;
    }
    m_values.fill(record);
    return true;
}

bool OwnerAgent::setData(ManageableData& record) {
    const std::vector<std::string> tags = record.rootIds();
    ItemValues items;
    for (const std::string& tag : tags) {
        std::string value;
        record.interogate(tag, tag, value);
        items.emplace_back(tag, std::move(value));
    }
    m_printer.askedToWrite(items);
    if (!pause()) {
        return false;
    }
    bool accepted = true;
    for (const std::string& tag : tags) {
        const auto refusal = m_refusals.find(tag);
        if (refusal != m_refusals.end()) {
            record.addRejectReason(tag, "//*", refusal->second);
            accepted = false;
        } else {
            accepted = m_values.keep(record, tag) && accepted;
        }
    }
    return accepted;
}

// It observes nothing, but an observer may have had its channel name.
bool OwnerAgent::manageableDataChanged(ManageableData& record) {
    m_printer.asked("changed", record.rootIds());
    return true;
}

bool OwnerAgent::resetUserData() {
    m_printer.asked("reset-user-data", {});
    m_values.reset();
    return true;
}

std::string OwnerAgent::findSchema(const std::string& tag, ManageableData& record) {
    std::string& name = m_schemaNames[tag];
    if (name.empty() && m_client->findSchemaName(tag, name) != CallStatus::eDone) {
        return {};
    }
    bool found = !name.empty();
    if (found && !record.getSchema(name) &&
        m_client->getSchema(name, record, found) != CallStatus::eDone) {
        return {};
    }
    return found ? name : std::string();
}

void OwnerAgent::fail(CallStatus status) {
    const CallFailure failure = CallFailure::of(*m_client, status, m_timeout);
    m_errors << "vireoctl: " << failure.reason << '\n';
    m_code = failure.code;
}

}  // namespace vireo
