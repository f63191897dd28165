#include "Watch.h"

#include <poll.h>

#include <algorithm>
#include <utility>

#include "CallFailure.h"
#include "data/ManageableData.h"
#include "terminal/StopSignal.h"

namespace vireo {
namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr milliseconds kLongestWait = std::chrono::hours(24);
constexpr const char* kAllData = "all-data";

}  // namespace

ExitCode Watch::run(LocalMgmtClient::Options connection, const StopSignal& stop) {
    connection.agent = this;
    m_timeout = connection.timeout;
    std::string error;
    const auto client = LocalMgmtClient::connect(connection, error);
    if (!client) {
        m_errors << "vireoctl: " << error << '\n';
        return ExitCode::eNotReached;
    }
    if (giveUpAll(*client) && observeAll(*client)) {
        m_errors << "vireoctl: watching as " << client->channelName() << '\n';
        m_code = watch(*client, stop);
    }
    stopObserving(*client);
    return m_code;
}

// What an earlier process of this channel name observed and did not stop is given up first, or each
// change would be told twice.
bool Watch::giveUpAll(LocalMgmtClient& client) {
    std::set<std::string> tags(m_options.tags.begin(), m_options.tags.end());
    m_wantsAll = !tags.insert(kAllData).second;
    for (const std::string& tag : tags) {
        if (const CallStatus status = giveUp(client, tag); status != CallStatus::eDone) {
            fail(client, status);
            return false;
        }
    }
    m_wanted.insert(m_options.tags.begin(), m_options.tags.end());
    return true;
}

bool Watch::observeAll(LocalMgmtClient& client) {
    bool result = false;
    m_isWatching = true;
    for (const std::string& tag : m_options.tags) {
        if (const CallStatus status = client.observeData(tag, m_options.bulk, result);
            status != CallStatus::eDone) {
            fail(client, status);
            return false;
        }
        if (result) {
            m_observed.push_back(tag);
        } else {
            m_errors << tag << ": cannot be observed (no such item)\n";
            m_code = ExitCode::eRefused;
        }
    }
    return m_code == ExitCode::eDone;
}

ExitCode Watch::watch(LocalMgmtClient& client, const StopSignal& stop) {
    const Clock::time_point end = Clock::now() + m_options.span.value_or(milliseconds::zero());
    while (!isDone()) {
        milliseconds left = kLongestWait;
        if (m_options.span) {
            left = std::min(left, std::chrono::ceil<milliseconds>(end - Clock::now()));
        }
        pollfd waited[] = {{client.pollDescriptor(), POLLIN, 0}, {stop.descriptor(), POLLIN, 0}};
        if (left <= milliseconds::zero() ||
            (::poll(waited, 2, static_cast<int>(left.count())) > 0 && waited[1].revents != 0)) {
            break;
        }
        if (client.serve(milliseconds::zero()) == CallStatus::eDisconnected) {
            fail(client, CallStatus::eDisconnected);
            break;
        }
        if (!giveUpStrays(client)) {
            break;
        }
    }
    m_isWatching = false;
    return m_code;
}

bool Watch::isDone() const {
    return !m_out || (m_options.count && m_told >= *m_options.count);
}

void Watch::fail(const LocalMgmtClient& client, CallStatus status) {
    const CallFailure failure = CallFailure::of(client, status, m_timeout);
    m_errors << "vireoctl: " << failure.reason << '\n';
    m_code = failure.code;
}

void Watch::stopObserving(LocalMgmtClient& client) {
    m_isWatching = false;
    for (const std::string& tag : m_observed) {
        if (giveUp(client, tag) != CallStatus::eDone) {
            return;  // a service that does not answer one does not answer the next
        }
    }
}

// What an earlier process observed beside the items of this one goes as soon as it is seen.
bool Watch::giveUpStrays(LocalMgmtClient& client) {
    for (const std::string& tag : std::exchange(m_strays, {})) {
        bool result = false;
        if (const CallStatus status = client.stopObservingData(tag, result);
            status != CallStatus::eDone) {
            fail(client, status);
            return false;
        }
    }
    return true;
}

// A collection is observed as a whole, but given up item by item. Of one that cannot be read
// completely not all items are known.
CallStatus Watch::giveUp(LocalMgmtClient& client, const std::string& tag) {
    bool result = false;
    CallStatus status = client.stopObservingData(tag, result);
    if (status != CallStatus::eDone || result) {
        return status;
    }
    ManageableData record;
    record.addRootId(tag, nullptr);
    status = client.getData(record, result);
    m_wantsAll = m_wantsAll || !result;
    for (const DxlDocumentPointer& member : record.documents()) {
        if (status == CallStatus::eDone) {
            m_wanted.insert(member->getName());
            status = client.stopObservingData(member->getName(), result);
        }
    }
    return status;
}

bool Watch::manageableDataChanged(ManageableData& record) {
    if (!m_isWatching || isDone()) {
        return true;
    }
    ItemValues items;
    bool isAnyWanted = false;
    for (const std::string& tag : record.rootIds()) {
        std::string value;
        if (!isWanted(tag)) {
            m_strays.insert(tag);
            continue;
        }
        isAnyWanted = true;
        if (record.interogate(tag, tag, value)) {
            items.emplace_back(tag, std::move(value));
        }
    }
    if (isAnyWanted) {
        m_printer.changed(items);
        ++m_told;
    }
    return true;
}

// An observer owns nothing.
bool Watch::setData(ManageableData& /*record*/) {
    return false;
}

bool Watch::getData(ManageableData& /*record*/) {
    return false;
}

bool Watch::resetUserData() {
    return true;
}

}  // namespace vireo
