#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include "data/ManageableData.h"

namespace vireo {

class BegunWrite;
class ItemWriter;

/// Writes of single stored items that came by message together and reach stable storage together:
/// one commit for all of them. Each is answered, and told to observers, after that. When the commit
/// fails all of them are refused.
///
/// Belongs to the message thread.
class WriteGroup {
public:
    /// What becomes of a write: whether it was accepted, else the record carries the refusals.
    using Done = std::function<void(bool result, const ManageableData& record)>;

    explicit WriteGroup(ItemWriter& writer);
    ~WriteGroup();
    WriteGroup(const WriteGroup&) = delete;
    WriteGroup& operator=(const WriteGroup&) = delete;

    /// Whether the record can be written together with others.
    bool takes(const ManageableData& record) const;
    /// Writes the record. `done` is called by a `finish`, perhaps by one of this call.
    void add(ManageableData record, Done done);
    /// Commits and answers what was added. An observer may come back in here: it then answers the
    /// rest.
    void finish();
    /// The same, when one of the items has been written, or may be a member of what is named.
    void finishBefore(const ManageableData& record);

private:
    struct Entry {
        std::unique_ptr<BegunWrite> write;
        Done done;
    };

    ItemWriter& m_writer;
    std::vector<Entry> m_begun;
    std::deque<Entry> m_committed;           ///< or not, but decided
    std::unordered_set<std::string> m_tags;  ///< of m_begun
};

}  // namespace vireo
