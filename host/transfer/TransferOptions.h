#pragma once

#include <chrono>

namespace vireo {

/// How patient transfers are, and how they reach FTP servers.
struct TransferOptions {
    /// From the start until the server has accepted the connection, name resolution included.
    std::chrono::milliseconds connectTimeout{20'000};
    /// From then on: the longest time in which the server may send nothing at all.
    std::chrono::milliseconds stallTimeout{30'000};
    /// FTP: the server connects to the phone for the data, instead of the phone to the server.
    bool usesActiveFtp = false;
};

}  // namespace vireo
