#pragma once

#include <mutex>

namespace vireo {

/// The SNMP library of the process, which keeps most of its state in common places. Whoever calls
/// it holds the lock; nothing that waits is called under it.
class SnmpLibrary {
public:
    using Lock = std::unique_lock<std::mutex>;

    /// The first one starts the library: without reading or writing any file of the machine.
    static Lock lock();
};

}  // namespace vireo
