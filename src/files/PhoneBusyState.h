#pragma once

#include <atomic>

namespace vireo {

/// Why the phone is busy: a mask of reasons, 0 when it is idle. Bit value 1 is a call. Safe from
/// every thread.
class PhoneBusyState {
public:
    unsigned mask() const { return m_mask.load(); }
    void set(unsigned bits) { m_mask.fetch_or(bits); }
    void clear(unsigned bits) { m_mask.fetch_and(~bits); }

private:
    std::atomic<unsigned> m_mask{0};
};

}  // namespace vireo
