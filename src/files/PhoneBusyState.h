#pragma once

#include <atomic>

namespace vireo {

class LocalMgmtIfc;

// Reasons for the phone to be busy.
constexpr unsigned kBusyWithCall = 1;
constexpr unsigned kBusyWithSoftwareUpdate = 512;

/// Why the phone is busy: a mask of reasons, 0 when it is idle. Mirrored as a decimal number in the
/// item "phone-busy-status". Safe from every thread.
class PhoneBusyState {
public:
    /// The item is written through `service`; not owned, outlives this.
    explicit PhoneBusyState(LocalMgmtIfc& service) : m_service(service) {}

    unsigned mask() const { return m_mask.load(); }
    /// Adds reasons. The item shows them when this returns, or whatever another thread has made of
    /// the mask meanwhile.
    /// Answers the mask that was written last.
    unsigned set(unsigned bits);
    /// The same, taking reasons away.
    unsigned clear(unsigned bits);
    /// Writes the item again when the mask is not `told` any more, and answers likewise. For
    /// announcements that reach observers later than the write: another one may have overtaken
    /// them.
    unsigned confirm(unsigned told);

private:
    unsigned publish();
    void writeItem(unsigned mask);

    LocalMgmtIfc& m_service;
    std::atomic<unsigned> m_mask{0};
};

}  // namespace vireo
