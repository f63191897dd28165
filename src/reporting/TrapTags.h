#pragma once

#include "LocalMgmtIfc.h"

namespace vireo {

/// The items that say whether, where to and with which password a receiver gets traps.
struct TrapTags {
    const char* active = "";
    const char* address = "";
    const char* port = "";
    const char* password = "";
    /// Whether the general SNMP manager gets a copy of each; empty where that cannot be.
    const char* copies = "";
};

/// By destination.
inline constexpr TrapTags kTrapTags[] = {
    {.active = "snmp-traps-active",
     .address = "snmp-trap-addr",
     .port = "snmp-trap-port",
     .password = "snmp-trap-pwd"},
    {.active = "qdc-qcu-active",
     .address = "qdc-collection-unit-addr",
     .port = "qdc-collection-unit-port",
     .password = "qdc-trap-pwd",
     .copies = "qdc-snmp-active"},
    {.active = "tcErrorReportSNMP",
     .address = "diagnostic-trap-addr",
     .port = "diagnostic-trap-port",
     .password = "diagnostic-trap-pwd",
     .copies = "diagnostic-snmp-active"},
};

inline constexpr unsigned kTrapDestinations = sizeof(kTrapTags) / sizeof(kTrapTags[0]);
static_assert(kTrapDestinations == LocalMgmtIfc::TRAP_DEST_DIAGNOSTIC + 1);

}  // namespace vireo
