#pragma once

#include <stdexcept>

namespace vireo {

/// What `Storage` throws; the text names the file and the reason.
struct StorageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

}  // namespace vireo
