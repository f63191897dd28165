#pragma once

#include <string>

namespace vireo {

class AdminProgressCallback;
class CurrentDownload;

/// Has software images burnt.
class ImageBurner {
public:
    /// `progress` hears how burns go on. Both outlive this.
    ImageBurner(CurrentDownload& current, AdminProgressCallback& progress)
        : m_current(current), m_progress(progress) {}

    /// Starts to burn an image; false when it is none for this phone or cannot be burnt now.
    bool startImageBurn(const std::string& path);

private:
    CurrentDownload& m_current;
    AdminProgressCallback& m_progress;
};

}  // namespace vireo
