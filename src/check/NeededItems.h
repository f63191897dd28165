#pragma once

#include <array>

namespace vireo {

/// Items that the service itself reads, writes or observes, by what it needs them for.
struct NeededItems {
    const char* purpose;
    /// Without any of them the service does without the purpose; else all of them are needed.
    bool isOptional;
    /// Only as items of its own do they work.
    bool isOwn;
    std::array<const char*, 12> tags;  ///< behind the last one: null
};

inline constexpr NeededItems kNeededItems[] = {
    {"knowing which software it runs", false, false, {"software-type"}},
    {"telling why the phone is busy", false, true, {"phone-busy-status"}},
    {"resetting user data", false, false, {"phone-lock-timeout"}},
    {"warnings of low memory", true, true, {"memory-monitor-remote-callback"}},
    {"locking menus", true, true, {"locked-config-menus", "locked-local-function-menus"}},
    {"keeping the ringer of distinctive ringing", true, false, {"ringer-audio-file"}},
    {"traps to the general SNMP manager",
     true,
     false,
     {"snmp-traps-active", "snmp-trap-addr", "snmp-trap-port", "snmp-trap-pwd"}},
    {"traps to the QDC collection unit",
     true,
     false,
     {"qdc-qcu-active", "qdc-collection-unit-addr", "qdc-collection-unit-port", "qdc-trap-pwd",
      "qdc-snmp-active"}},
    {"traps to the diagnostic receiver",
     true,
     false,
     {"tcErrorReportSNMP", "diagnostic-trap-addr", "diagnostic-trap-port", "diagnostic-trap-pwd",
      "diagnostic-snmp-active"}},
    {"observing voice quality",
     true,
     false,
     {"qdc-qos-statistics1", "qdc-qos-statistics2", "qdc-qos-statistics3", "qdc-qos-statistics4",
      "qdc-qos-statistics5", "qdc-qos-statistics6"}},
    {"the thresholds in quality reports",
     true,
     false,
     {"qdc-jb-threshold", "qdc-delay-threshold", "qdc-ncc-pkt-loss-thres",
      "qdc-ncc-consecutive-pkt-loss", "qdc-ncc-consecutive-good-pkts", "qdc-cc-pkt-loss-threshold",
      "qdc-cc-consecutive-pkt-loss", "qdc-cc-consecutive-good-pkts", "qdc-report-mode",
      "qdc-report-int", "qdc-obs-int", "qdc-session-length"}},
    // The account is one of a download's settings, but nobody reads it.
    {"downloads from the common server",
     true,
     false,
     {"dl-ftp-method", "dl-ftp-addr", "dl-ftp-port", "dl-ftp-username", "dl-ftp-password",
      "dl-ftp-path", "dl-ftp-base-url"}},
};

/// What the tags of one type of file have between "dl-" and their endings.
inline constexpr const char* kDownloadInfixes[] = {"app", "moh", "pic", "lgo", "jav", "ldp", "scr",
                                                   "rng", "jar", "jad", "phd", "vra", "vrp"};
inline constexpr const char* kDownloadEndings[] = {
    "-use-defaults", "-method",   "-addr", "-port",        "-username", "-password",
    "-path",         "-base-url", "-file", "-last-status", "-last-time"};

}  // namespace vireo
