#include "items/NotificationOrder.h"

#include <algorithm>
#include <chrono>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "Boundary.h"
#include "items/ItemRecords.h"

namespace vireo {
namespace {

/// Long enough for observers that work, short enough not to be felt when one hangs.
constexpr std::chrono::milliseconds kPatience(50);

/// The changes that this thread has under way, one inside the other.
thread_local unsigned t_depth = 0;

ManageableData restrictedTo(const std::vector<std::string>& tags, const ManageableData& record) {
    const std::unordered_set<std::string> wanted(tags.begin(), tags.end());
    ManageableData restricted;
    for (const std::string& tag : record.rootIds()) {
        if (wanted.count(tag) != 0) {
            ItemRecords::copyItem(record, restricted, tag);
            restricted.addRootId(tag, nullptr);
        }
    }
    return restricted;
}

}  // namespace

void NotificationOrder::append(std::vector<PartPointer>& parts, const std::string& tag) {
    PartPointer& last = m_last[tag];
    if (last && std::any_of(parts.begin(), parts.end(), [&](const PartPointer& part) {
            return part == last ||
                   std::find(part->tags.begin(), part->tags.end(), tag) != part->tags.end();
        })) {
        return;
    }
    // Two parts must not wait for each other.
    if (parts.empty() || (last && comesBefore(*parts.back(), *last))) {
        parts.push_back(std::make_shared<Part>());
    }
    const PartPointer& part = parts.back();
    part->tags.push_back(tag);
    if (last) {
        last->followers.push_back(part);
        ++part->blockers;
    }
    last = part;
}

/// Whether `other` waits for the part, or for one that does.
bool NotificationOrder::comesBefore(const Part& part, const Part& other) {
    std::unordered_set<const Part*> seen{&part};
    std::vector<const Part*> open{&part};
    while (!open.empty()) {
        const Part* const each = open.back();
        open.pop_back();
        if (each == &other) {
            return true;
        }
        for (const PartPointer& follower : each->followers) {
            if (seen.insert(follower.get()).second) {
                open.push_back(follower.get());
            }
        }
    }
    return false;
}

/// False when the part was left to whoever announces the one before it.
bool NotificationOrder::awaitTurn(Part& part, const ManageableData& record, bool mayWait) {
    std::unique_lock lock(m_mutex);
    const auto isFirst = [&part] { return part.blockers == 0; };
    if (!isFirst() && mayWait && !m_isSlow) {
        m_isSlow = !m_unblocked.wait_for(lock, kPatience, isFirst);
    }
    if (isFirst()) {
        return true;
    }
    part.left.emplace(record);
    return false;
}

std::optional<unsigned> NotificationOrder::deliver(Part& part, const ManageableData& record,
                                                   bool mayWait) {
    if (!awaitTurn(part, record, mayWait)) {
        return std::nullopt;
    }
    const unsigned count = tell(record);
    finish(part);
    return count;
}

unsigned NotificationOrder::tell(const ManageableData& record) noexcept {
    return guarded("notifyObservers", 0U, [&] { return m_audience.tell(record); });
}

/// Ends a part that was announced, and announces what was left behind it.
void NotificationOrder::finish(Part& part) noexcept {
    Part* chainEnd = release(part, &part);
    for (PartPointer each = std::move(part.next); each; each = std::move(each->next)) {
        if (!each->left->rootIds().empty()) {
            tell(*each->left);
        }
        chainEnd = release(*each, chainEnd);
    }
}

/// Takes the part out of the order, and chains what was left behind it and waits for nothing else
/// to `chainEnd`. Answers the new end. Needs no memory: nothing must stay in the order for ever.
NotificationOrder::Part* NotificationOrder::release(Part& part, Part* chainEnd) noexcept {
    const std::lock_guard lock(m_mutex);
    m_isSlow = false;
    for (const std::string& tag : part.tags) {
        const auto found = m_last.find(tag);
        if (found != m_last.end() && found->second.get() == &part) {
            m_last.erase(found);
        }
    }
    bool wakes = false;
    for (PartPointer& follower : part.followers) {
        if (--follower->blockers > 0) {
            continue;
        }
        wakes |= !follower->left;
        if (follower->left) {
            chainEnd->next = std::move(follower);
            chainEnd = chainEnd->next.get();
        }
    }
    part.followers.clear();
    if (wakes) {
        m_unblocked.notify_all();
    }
    return chainEnd;
}

NotificationOrder::Change::Change(NotificationOrder& order) : m_order(&order) {
    ++t_depth;
}

NotificationOrder::Change::Change(Change&& other) noexcept
    : m_order(std::exchange(other.m_order, nullptr)), m_parts(std::move(other.m_parts)) {}

NotificationOrder::Change::~Change() {
    if (m_order == nullptr) {
        return;
    }
    for (const PartPointer& part : m_parts) {
        guardedCall("notifyObservers", [&] {
            if (part && m_order->awaitTurn(*part, ManageableData(), false)) {
                m_order->finish(*part);
            }
        });
    }
    --t_depth;
}

void NotificationOrder::Change::tookEffect(const std::string& tag) {
    const std::lock_guard lock(m_order->m_mutex);
    m_order->append(m_parts, tag);
}

void NotificationOrder::Change::tookEffect(const ManageableData& record) {
    const std::vector<std::string>& tags = record.rootIds();
    if (m_parts.size() == 1 && m_parts.front()->tags == tags) {
        return;
    }
    std::unordered_set<std::string_view> placed;
    for (const PartPointer& part : m_parts) {
        placed.insert(part->tags.begin(), part->tags.end());
    }
    std::vector<const std::string*> missing;  // all looked up before the parts grow
    for (const std::string& tag : tags) {
        if (placed.empty() || placed.count(tag) == 0) {
            missing.push_back(&tag);
        }
    }
    const std::lock_guard lock(m_order->m_mutex);
    for (const std::string* tag : missing) {
        m_order->append(m_parts, *tag);
    }
}

std::optional<unsigned> NotificationOrder::Change::tell(const ManageableData& record) {
    tookEffect(record);
    if (m_parts.empty()) {
        return m_order->tell(record);
    }
    const bool mayWait = t_depth == 1;
    std::optional<unsigned> count = 0;
    for (PartPointer& part : m_parts) {
        const std::optional<unsigned> told =
            m_parts.size() == 1
                ? m_order->deliver(*part, record, mayWait)
                : m_order->deliver(*part, restrictedTo(part->tags, record), mayWait);
        count = count && told ? std::optional(*count + *told) : std::nullopt;
        part.reset();
    }
    return count;
}

}  // namespace vireo
