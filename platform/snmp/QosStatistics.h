#pragma once

namespace vireo {

/// Tags of voice-quality statistics: the item of a channel is the base with the channel's number,
/// 1 to 6, behind it; the others are nodes of that item.
struct QosStatistics {
    static constexpr const char* QDC_QOS_STATISTICS = "qdc-qos-statistics";

    static constexpr const char* QDC_SPECIFIC_TRAP_TYPE = "qdc-specific-trap-type";
    static constexpr const char* QDC_PERIOD_START_SECS = "qdc-period-start-secs";
    static constexpr const char* QDC_PERIOD_START_CENTIS = "qdc-period-start-centis";
    static constexpr const char* QDC_PERIOD_END_SECS = "qdc-period-end-secs";
    static constexpr const char* QDC_PERIOD_END_CENTIS = "qdc-period-end-centis";
    static constexpr const char* QDC_LOCAL_IP = "qdc-local-ip";
    static constexpr const char* QDC_LOCAL_PORT = "qdc-local-port";
    static constexpr const char* QDC_REMOTE_IP = "qdc-remote-ip";
    static constexpr const char* QDC_REMOTE_PORT = "qdc-remote-port";
    static constexpr const char* QDC_SSRC_RECEIVING = "qdc-ssrc-receiving";
    static constexpr const char* QDC_SSRC_SENDING = "qdc-ssrc-sending";
    static constexpr const char* QDC_CODEC_RECEIVED = "qdc-codec-received";
    static constexpr const char* QDC_MAX_PACKET_SIZE = "qdc-max-packet-size";
    static constexpr const char* QDC_SILENCE_SUPPRESSION = "qdc-silence-suppression";
    static constexpr const char* QDC_GOOD_PACKETS = "qdc-good-packets";
    static constexpr const char* QDC_MAX_JITTER = "qdc-max-jitter";
    static constexpr const char* QDC_MAX_INTERARRIVAL_JITTER = "qdc-max-interarrival-jitter";
    static constexpr const char* QDC_JITTER_THRESHOLD_EXCEEDS = "qdc-jitter-threshold-exceeds";
    static constexpr const char* QDC_ROUND_TRIP_DELAY = "qdc-round-trip-delay";
    static constexpr const char* QDC_ROUND_TRIP_THRESHOLD_EXCEEDED =
        "qdc-round-trip-threshold-exceeded";
    static constexpr const char* QDC_LOST_PACKETS = "qdc-lost-packets";
    static constexpr const char* QDC_DISCARDED_PACKETS = "qdc-discarded-packets";
    static constexpr const char* QDC_LOST_PACKET_PERIODS = "qdc-lost-packet-periods";
    static constexpr const char* QDC_CONSEC_PACKET_LOSS = "qdc-consec-packet-loss";
    static constexpr const char* QDC_CPL_PERIODS = "qdc-cpl-periods";
    static constexpr const char* QDC_CONSEC_GOOD_PACKETS = "qdc-consec-good-packets";
    static constexpr const char* QDC_CGP_PERIODS = "qdc-cgp-periods";
    static constexpr const char* QDC_JITTER_BUFFER_OVERS = "qdc-jitter-buffer-overs";
    static constexpr const char* QDC_JITTER_BUFFER_UNDERS = "qdc-jitter-buffer-unders";
    static constexpr const char* QDC_CODEC_CHANGED = "qdc-codec-changed";
    static constexpr const char* QDC_ONE_THRESHOLD_EXCEEDS = "qdc-one-threshold-exceeds";
    static constexpr const char* QDC_TALLIS_ID = "qdc-tallis-id";
    static constexpr const char* QDC_LTU_NUMBER = "qdc-ltu-number";
    static constexpr const char* QDC_SLOT_NUMBER = "qdc-slot-number";
    static constexpr const char* QDC_ENDPOINT_TYPE = "qdc-endpoint-type";
    static constexpr const char* QDC_VERSION = "qdc-version";
    static constexpr const char* QDC_SUBSCRIBER_TYPE = "qdc-subscriber-type";
    static constexpr const char* QDC_SUBSCRIBER_NUMBER = "qdc-subscriber-number";
    static constexpr const char* QDC_CALL_ID = "qdc-call-id";
    static constexpr const char* QDC_MAC_ADDR = "qdc-mac-addr";
};

}  // namespace vireo
