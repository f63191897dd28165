#pragma once

#include <atomic>
#include <thread>

#include "sync/Semaphore.h"

namespace vireo {

class RegistrySemaphore;

/// Lets one thread at a time raise a trap.
class RaiseGate {
public:
    /// `registry` may be null; not owned, outlives the gate.
    explicit RaiseGate(const RegistrySemaphore* registry) : m_registry(registry) {}

private:
    friend class RaiseTurn;

    const RegistrySemaphore* const m_registry;
    Semaphore m_semaphore{1, 1};
    std::atomic<std::thread::id> m_raiser{};
};

/// The turn of a thread to raise a trap, from construction to destruction; waits for it without
/// limit. But who is raising one already gets none, instead of waiting for itself; and who holds
/// the registry gets none while another one raises, for that one may be waiting for the registry.
class RaiseTurn {
public:
    explicit RaiseTurn(RaiseGate& gate);
    ~RaiseTurn();
    RaiseTurn(const RaiseTurn&) = delete;
    RaiseTurn& operator=(const RaiseTurn&) = delete;

    bool isMine() const { return m_isMine; }

private:
    bool take();

    RaiseGate& m_gate;
    const bool m_isMine;
};

}  // namespace vireo
