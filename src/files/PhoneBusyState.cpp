#include "files/PhoneBusyState.h"

#include <string>

#include "LocalMgmtIfc.h"
#include "LogMacros.h"
#include "data/ManageableData.h"

namespace vireo {
namespace {

constexpr const char* kItem = "phone-busy-status";

}  // namespace

unsigned PhoneBusyState::set(unsigned bits) {
    m_mask.fetch_or(bits);
    return publish();
}

unsigned PhoneBusyState::clear(unsigned bits) {
    m_mask.fetch_and(~bits);
    return publish();
}

unsigned PhoneBusyState::confirm(unsigned told) {
    return told == mask() ? told : publish();
}

unsigned PhoneBusyState::publish() {
    // Observers call back, so no lock is held while the item is written. Whoever writes last looks
    // at the mask afterwards, and so the item ends up with what the mask is.
    unsigned written = 0;
    do {
        written = mask();
        writeItem(written);
    } while (written != mask());
    return written;
}

void PhoneBusyState::writeItem(unsigned mask) {
    ManageableData record;
    record.populate(kItem, std::to_string(mask));
    if (!m_service.setData(record)) {
        VCMS_LOG(kLogWarning, "the busy state %u could not be written to %s", mask, kItem);
    }
}

}  // namespace vireo
