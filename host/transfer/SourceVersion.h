#pragma once

#include <cstdint>
#include <string>

namespace vireo {

/// Which state of a source has been fetched so far. The rest of it may be fetched later only when
/// the source is still in that state.
struct SourceVersion {
    std::int64_t size = -1;  ///< bytes of the whole; negative: not said
    /// HTTPS: entity tag or date of change, as If-Range takes them; FTP: date of change. Empty: the
    /// server says nothing by which a change could be noticed.
    std::string validator;

    bool isKnown() const { return size >= 0 && !validator.empty(); }
    bool operator==(const SourceVersion&) const = default;
};

}  // namespace vireo
