#pragma once

#include <string>

#include "reporting/TrapTags.h"

namespace vireo::test {

/// What the items about traps say in each epoch of a storm. One receiver moves with an epoch, by
/// turns, and none with every fourth. So an item has one value in an epoch, and while it is being
/// changed that of the epoch before or that of the one behind.
class StormPlan {
public:
    static constexpr unsigned kFirst = 4;
    static constexpr unsigned kPlaces = 4;  ///< two addresses with two ports each

    static bool isOn(unsigned epoch, unsigned dest) {
        return ((bitsOf(epoch) >> (2 * dest)) & 3U) != 0;
    }
    static bool isCopied(unsigned epoch, unsigned dest) {
        return dest != 0 && ((bitsOf(epoch) >> (5 + dest)) & 1U) != 0;
    }
    /// The last epoch with which the receiver moved. Its password says which one that was.
    static unsigned movedWith(unsigned epoch, unsigned dest) { return epoch - (epoch - dest) % 4; }
    static unsigned placeOf(unsigned epoch, unsigned dest) {
        return (bitsOf(movedWith(epoch, dest)) >> 8U) % kPlaces;
    }
    static std::string passwordOf(unsigned epoch, unsigned dest) {
        return std::to_string(dest) + "-" + std::to_string(movedWith(epoch, dest));
    }

    /// Whether every receiver is on, and all copies are wanted.
    static bool isFull(unsigned epoch) {
        bool isFull = isOn(epoch, 0);
        for (unsigned dest = 1; dest < kTrapDestinations; ++dest) {
            isFull = isFull && isOn(epoch, dest) && isCopied(epoch, dest);
        }
        return isFull;
    }

private:
    /// Looks like chance, and is the same in every run.
    static unsigned bitsOf(unsigned epoch) { return (epoch * 2654435761U) >> 16U; }
};

}  // namespace vireo::test
