#pragma once

#include <string>
#include <utility>

#include "device/DevicePorts.h"

namespace vireo {

/// A phone that was built without the check of signatures, and so takes no software images.
class NoImages : public ImagePort {
public:
    explicit NoImages(std::string hardwareVariant)
        : m_hardwareVariant(std::move(hardwareVariant)) {}

    std::string hardwareVariant() override { return m_hardwareVariant; }
    bool verify(const std::string& path, const std::string& /*hardwareVariant*/,
                std::string& error) override {
        error = refusal(path);
        return false;
    }
    bool burn(const std::string& path, AdminProgressCallback& /*progress*/,
              std::string& error) override {
        error = refusal(path);
        return false;
    }
    bool isActive() override { return false; }

private:
    static std::string refusal(const std::string& path) {
        return "cannot use the image \"" + path +
               "\": this phone was built without the check of signatures";
    }

    std::string m_hardwareVariant;
};

}  // namespace vireo
