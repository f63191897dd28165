#pragma once

namespace vireo {

class ManageableData;

/// A write of one stored item whose value the store has, but has not committed. Belongs to one
/// thread. What is never committed by `commit` is when it is destroyed, and nobody hears of it.
class BegunWrite {
public:
    virtual ~BegunWrite() = default;

    /// Whether nothing has gone wrong so far.
    virtual bool isAccepted() const = 0;
    /// Brings the value to stable storage, with all others that the thread has begun. Once.
    virtual void commit() = 0;
    /// Tells the observers of what was accepted. Once, after `commit`.
    virtual void tell() = 0;
    /// What was written, with the refusals.
    virtual const ManageableData& record() const = 0;
};

}  // namespace vireo
