#pragma once

namespace vireo {

/// Tags of the items that say when voice quality is worth a report, and how often. NCC: without a
/// change of the codec; CC: with one.
struct QDCData {
    static constexpr const char* QDC_JB_THRESHOLD = "qdc-jb-threshold";
    static constexpr const char* QDC_DELAY_THRESHOLD = "qdc-delay-threshold";
    static constexpr const char* QDC_NCC_PKT_LOSS_THRES = "qdc-ncc-pkt-loss-thres";
    static constexpr const char* QDC_NCC_CONSECUTIVE_PKT_LOSS = "qdc-ncc-consecutive-pkt-loss";
    static constexpr const char* QDC_NCC_CONSECUTIVE_GOOD_PKTS = "qdc-ncc-consecutive-good-pkts";
    static constexpr const char* QDC_CC_PKT_LOSS_THRESHOLD = "qdc-cc-pkt-loss-threshold";
    static constexpr const char* QDC_CC_CONSECUTIVE_PKT_LOSS = "qdc-cc-consecutive-pkt-loss";
    static constexpr const char* QDC_CC_CONSECUTIVE_GOOD_PKTS = "qdc-cc-consecutive-good-pkts";
    static constexpr const char* QDC_REPORT_MODE = "qdc-report-mode";
    static constexpr const char* QDC_REPORT_INT = "qdc-report-int";
    static constexpr const char* QDC_OBS_INT = "qdc-obs-int";
    static constexpr const char* QDC_SESSION_LENGTH = "qdc-session-length";
};

}  // namespace vireo
