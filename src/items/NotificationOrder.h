#pragma once

#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "data/ManageableData.h"

namespace vireo {

/// Has the changes of one item announced in the order in which its values took effect, whichever
/// threads wrote them; changes of different items do not wait for each other. Safe from every
/// thread; nothing is called with a lock held.
///
/// The thread that made a change announces it. It waits a moment for one that comes before, unless
/// it has another change under way itself (an observer or an owner that writes when it is called),
/// or somebody has waited in vain already: then, or when the moment has passed, it leaves its
/// change to whoever announces the one before.
class NotificationOrder {
public:
    /// Who is told. Called by the thread that announces, without a lock.
    struct Audience {
        virtual ~Audience() = default;
        /// Tells everybody of the items of the record; answers the number of call-backs made.
        virtual unsigned tell(const ManageableData& record) = 0;
    };

    class Change;

    /// `audience` must outlive this.
    explicit NotificationOrder(Audience& audience) : m_audience(audience) {}

private:
    /// Items that are announced together. Its place in the order of each of them is fixed when it
    /// comes in; it comes before its followers and after `blockers` others.
    struct Part {
        std::vector<std::string> tags;
        std::vector<std::shared_ptr<Part>> followers;  ///< one for each item in common
        std::size_t blockers = 0;
        std::optional<ManageableData> left;  ///< to be announced by whoever unblocks it
        std::shared_ptr<Part> next;          ///< in a chain of parts that wait to be announced
    };
    using PartPointer = std::shared_ptr<Part>;

    void append(std::vector<PartPointer>& parts, const std::string& tag);
    std::optional<unsigned> deliver(Part& part, const ManageableData& record, bool mayWait);
    static bool comesBefore(const Part& part, const Part& other);
    bool awaitTurn(Part& part, const ManageableData& record, bool mayWait);
    unsigned tell(const ManageableData& record) noexcept;
    void finish(Part& part) noexcept;
    Part* release(Part& part, Part* chainEnd) noexcept;

    Audience& m_audience;
    std::mutex m_mutex;  // a leaf
    std::condition_variable m_unblocked;
    bool m_isSlow = false;  ///< a wait was in vain, and nothing has been announced since
    std::unordered_map<std::string, PartPointer> m_last;  // the latest of each item, until told
};

/// One write or announcement. Belongs to one thread.
class NotificationOrder::Change {
public:
    explicit Change(NotificationOrder& order);
    /// What was not told stays untold.
    ~Change();
    Change(Change&& other) noexcept;
    Change(const Change&) = delete;
    Change& operator=(const Change&) = delete;
    Change& operator=(Change&&) = delete;

    /// The item has its new value now: earlier changes of it come before this one, later ones after
    /// it. May be called again for the same item.
    void tookEffect(const std::string& tag);
    /// The same for those items of the record that did not take effect yet.
    void tookEffect(const ManageableData& record);
    /// Has the items of the record announced; those that did not take effect yet do so now. Items
    /// that took effect and are not in the record are not announced. Answers the number of
    /// call-backs made; nothing when others announce some of it. Once, and not while this thread
    /// holds the registry.
    std::optional<unsigned> tell(const ManageableData& record);

private:
    NotificationOrder* m_order;
    /// Almost always one. An item that has to wait for a change that itself waits for this one
    /// begins another.
    std::vector<PartPointer> m_parts;
};

}  // namespace vireo
