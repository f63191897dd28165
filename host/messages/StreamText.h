#pragma once

#include <istream>
#include <string>

namespace vireo {

/// The text of a message that arrived in a stream.
class StreamText {
public:
    /// Takes what `in` holds, without waiting for more, in one piece.
    static std::string takeAll(std::istream& in);
};

}  // namespace vireo
