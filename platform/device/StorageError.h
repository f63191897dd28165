#pragma once

#include <stdexcept>

namespace vireo {

/// What `Storage` throws; the text names the file and the reason.
struct StorageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// A directory on the way to a file is not there.
struct MissingDirectoryError : StorageError {
    using StorageError::StorageError;
};

}  // namespace vireo
