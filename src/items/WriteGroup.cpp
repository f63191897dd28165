#include "items/WriteGroup.h"

#include <iterator>
#include <utility>

#include "Boundary.h"
#include "items/BegunWrite.h"
#include "items/ItemWriter.h"

namespace vireo {
namespace {

/// More in one commit gains little, and everybody waits for the last of them.
constexpr std::size_t kMost = 256;

}  // namespace

WriteGroup::WriteGroup(ItemWriter& writer) : m_writer(writer) {}

WriteGroup::~WriteGroup() = default;

bool WriteGroup::takes(const ManageableData& record) const {
    return m_writer.isStoredItem(record);
}

void WriteGroup::add(ManageableData record, Done done) {
    m_begun.reserve(m_begun.size() + 1);
    m_tags.insert(record.getRootId());
    m_begun.push_back({m_writer.begin(std::move(record)), std::move(done)});
    // A write that the store did not take may have lost those before it.
    if (!m_begun.back().write->isAccepted() || m_begun.size() == kMost) {
        finish();
    }
}

void WriteGroup::finish() {
    m_tags.clear();
    for (const Entry& entry : m_begun) {
        entry.write->commit();
    }
    m_committed.insert(m_committed.end(), std::make_move_iterator(m_begun.begin()),
                       std::make_move_iterator(m_begun.end()));
    m_begun.clear();
    while (!m_committed.empty()) {
        const Entry entry = std::move(m_committed.front());
        m_committed.pop_front();
        guardedCall("setData", [&] {
            entry.write->tell();
            entry.done(entry.write->isAccepted(), entry.write->record());
        });
    }
}

void WriteGroup::finishBefore(const ManageableData& record) {
    for (const std::string& rootId : record.rootIds()) {
        if (m_tags.count(rootId) != 0 || m_writer.isCollection(rootId)) {
            finish();
            return;
        }
    }
}

}  // namespace vireo
