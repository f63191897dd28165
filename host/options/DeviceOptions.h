#pragma once

#include <string>

#include "snmp/TrapOptions.h"
#include "transfer/TransferOptions.h"

namespace vireo {

/// What the parts that stand for the phone itself are told. Directories are below the root.
struct DeviceOptions {
    std::string hardwareVariant = "desk-1";  ///< that software images are made for
    std::string storageDirectory = "data/vireo";
    std::string certificateDirectory = "certificates";
    std::string flashDirectory = "flash";
    std::string keyDirectory = "software-keys";  ///< of those who may sign software images
    bool allowsDowngrade = false;                ///< to older software than what runs
    std::string passwordDirectory = "passwords";
    /// Whether shell commands and reboots are those of this machine, if the root is "/".
    bool allowsDeviceCommands = false;
    TransferOptions transfer;
    TrapOptions traps;
};

}  // namespace vireo
