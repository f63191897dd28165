#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "snmp/QDCData.h"
#include "snmp/QosStatistics.h"

namespace vireo {

/// What one voice-quality report says, all numbers 0 and all texts empty at first. What a number
/// counts, and in which unit, is laid down by whoever measures.
struct QosTrapFields {
    std::uint32_t jitterBufferThreshold = 0;
    std::uint32_t delayThreshold = 0;
    std::uint32_t packetLossThreshold = 0;  ///< without a change of the codec
    std::uint32_t consecutiveLossThreshold = 0;
    std::uint32_t consecutiveGoodThreshold = 0;
    std::uint32_t codecChangePacketLossThreshold = 0;
    std::uint32_t codecChangeConsecutiveLossThreshold = 0;
    std::uint32_t codecChangeConsecutiveGoodThreshold = 0;
    std::uint32_t reportMode = 0;
    std::uint32_t reportInterval = 0;
    std::uint32_t observationInterval = 0;
    std::uint32_t sessionLength = 0;
    std::uint32_t periodStartSeconds = 0;
    std::uint32_t periodStartHundredths = 0;
    std::uint32_t periodEndSeconds = 0;
    std::uint32_t periodEndHundredths = 0;
    std::string localIPAddress;
    std::uint32_t localPort = 0;
    std::string remoteIPAddress;
    std::uint32_t remotePort = 0;
    std::uint32_t ssrcReceived = 0;
    std::uint32_t ssrcSent = 0;
    std::uint32_t codecReceived = 0;
    std::uint32_t maximumPacketSize = 0;
    std::uint32_t silenceSuppression = 0;
    std::uint32_t goodPackets = 0;
    std::uint32_t maximumJitter = 0;
    std::uint32_t maximumInterarrivalJitter = 0;
    std::uint32_t jitterThresholdExceeded = 0;
    std::uint32_t roundTripDelay = 0;
    std::uint32_t roundTripThresholdExceeded = 0;
    std::uint32_t lostPackets = 0;
    std::uint32_t discardedPackets = 0;
    std::uint32_t lostPacketPeriods = 0;
    std::string consecutivePacketLoss;
    std::uint32_t consecutivePacketLossPeriods = 0;
    std::string consecutiveGoodPackets;
    std::uint32_t consecutiveGoodPacketsPeriods = 0;
    std::uint32_t jitterBufferOverruns = 0;
    std::uint32_t jitterBufferUnderruns = 0;
    std::uint32_t codecChanged = 0;
    std::uint32_t anyThresholdExceeded = 0;
    std::string pbxIdentifier;
    std::uint32_t ltuNumber = 0;
    std::uint32_t slotNumber = 0;
    std::string endpointType;
    std::string version;
    std::uint32_t subscriberType = 0;
    std::string subscriberNumber;
    std::string callIdentifier;
    std::string macAddress;

    bool operator==(const QosTrapFields&) const = default;
};

/// Where the value of a field comes from: an item of its own, read when the report is made, or a
/// node of the statistics that are reported.
enum class QosFieldSource : std::uint8_t { eItem, eStatistics };

/// One row of the table of fields.
struct QosTrapRow {
    QosFieldSource source;
    const char* tag;  ///< of the item or of the node
    /// Where the value is kept; exactly one of the two is not null.
    std::uint32_t QosTrapFields::*number;
    std::string QosTrapFields::*text;

    constexpr QosTrapRow(QosFieldSource from, const char* name, std::uint32_t QosTrapFields::*field)
        : source(from), tag(name), number(field), text(nullptr) {}
    constexpr QosTrapRow(QosFieldSource from, const char* name, std::string QosTrapFields::*field)
        : source(from), tag(name), number(nullptr), text(field) {}

    constexpr bool isText() const { return text != nullptr; }
};

/// All fields in the order in which they are read and sent. A row's number, counted from 1, is the
/// last sub-identifier of its varbind, so rows are never moved and new ones go to the end.
inline constexpr std::array<QosTrapRow, 51> kQosTrapRows = [] {
    using enum QosFieldSource;
    using Tag = QosStatistics;
    using Own = QDCData;
    using To = QosTrapFields;
    return std::array<QosTrapRow, 51>{{
        {eItem, Own::QDC_JB_THRESHOLD, &To::jitterBufferThreshold},
        {eItem, Own::QDC_DELAY_THRESHOLD, &To::delayThreshold},
        {eItem, Own::QDC_NCC_PKT_LOSS_THRES, &To::packetLossThreshold},
        {eItem, Own::QDC_NCC_CONSECUTIVE_PKT_LOSS, &To::consecutiveLossThreshold},
        {eItem, Own::QDC_NCC_CONSECUTIVE_GOOD_PKTS, &To::consecutiveGoodThreshold},
        {eItem, Own::QDC_CC_PKT_LOSS_THRESHOLD, &To::codecChangePacketLossThreshold},
        {eItem, Own::QDC_CC_CONSECUTIVE_PKT_LOSS, &To::codecChangeConsecutiveLossThreshold},
        {eItem, Own::QDC_CC_CONSECUTIVE_GOOD_PKTS, &To::codecChangeConsecutiveGoodThreshold},
        {eItem, Own::QDC_REPORT_MODE, &To::reportMode},
        {eItem, Own::QDC_REPORT_INT, &To::reportInterval},
        {eItem, Own::QDC_OBS_INT, &To::observationInterval},
        {eItem, Own::QDC_SESSION_LENGTH, &To::sessionLength},
        {eStatistics, Tag::QDC_PERIOD_START_SECS, &To::periodStartSeconds},
        {eStatistics, Tag::QDC_PERIOD_START_CENTIS, &To::periodStartHundredths},
        {eStatistics, Tag::QDC_PERIOD_END_SECS, &To::periodEndSeconds},
        {eStatistics, Tag::QDC_PERIOD_END_CENTIS, &To::periodEndHundredths},
        {eStatistics, Tag::QDC_LOCAL_IP, &To::localIPAddress},
        {eStatistics, Tag::QDC_LOCAL_PORT, &To::localPort},
        {eStatistics, Tag::QDC_REMOTE_IP, &To::remoteIPAddress},
        {eStatistics, Tag::QDC_REMOTE_PORT, &To::remotePort},
        {eStatistics, Tag::QDC_SSRC_RECEIVING, &To::ssrcReceived},
        {eStatistics, Tag::QDC_SSRC_SENDING, &To::ssrcSent},
        {eStatistics, Tag::QDC_CODEC_RECEIVED, &To::codecReceived},
        {eStatistics, Tag::QDC_MAX_PACKET_SIZE, &To::maximumPacketSize},
        {eStatistics, Tag::QDC_SILENCE_SUPPRESSION, &To::silenceSuppression},
        {eStatistics, Tag::QDC_GOOD_PACKETS, &To::goodPackets},
        {eStatistics, Tag::QDC_MAX_JITTER, &To::maximumJitter},
        {eStatistics, Tag::QDC_MAX_INTERARRIVAL_JITTER, &To::maximumInterarrivalJitter},
        {eStatistics, Tag::QDC_JITTER_THRESHOLD_EXCEEDS, &To::jitterThresholdExceeded},
        {eStatistics, Tag::QDC_ROUND_TRIP_DELAY, &To::roundTripDelay},
        {eStatistics, Tag::QDC_ROUND_TRIP_THRESHOLD_EXCEEDED, &To::roundTripThresholdExceeded},
        {eStatistics, Tag::QDC_LOST_PACKETS, &To::lostPackets},
        {eStatistics, Tag::QDC_DISCARDED_PACKETS, &To::discardedPackets},
        {eStatistics, Tag::QDC_LOST_PACKET_PERIODS, &To::lostPacketPeriods},
        {eStatistics, Tag::QDC_CONSEC_PACKET_LOSS, &To::consecutivePacketLoss},
        {eStatistics, Tag::QDC_CPL_PERIODS, &To::consecutivePacketLossPeriods},
        {eStatistics, Tag::QDC_CONSEC_GOOD_PACKETS, &To::consecutiveGoodPackets},
        {eStatistics, Tag::QDC_CGP_PERIODS, &To::consecutiveGoodPacketsPeriods},
        {eStatistics, Tag::QDC_JITTER_BUFFER_OVERS, &To::jitterBufferOverruns},
        {eStatistics, Tag::QDC_JITTER_BUFFER_UNDERS, &To::jitterBufferUnderruns},
        {eStatistics, Tag::QDC_CODEC_CHANGED, &To::codecChanged},
        {eStatistics, Tag::QDC_ONE_THRESHOLD_EXCEEDS, &To::anyThresholdExceeded},
        {eStatistics, Tag::QDC_TALLIS_ID, &To::pbxIdentifier},
        {eStatistics, Tag::QDC_LTU_NUMBER, &To::ltuNumber},
        {eStatistics, Tag::QDC_SLOT_NUMBER, &To::slotNumber},
        {eStatistics, Tag::QDC_ENDPOINT_TYPE, &To::endpointType},
        {eStatistics, Tag::QDC_VERSION, &To::version},
        {eStatistics, Tag::QDC_SUBSCRIBER_TYPE, &To::subscriberType},
        {eStatistics, Tag::QDC_SUBSCRIBER_NUMBER, &To::subscriberNumber},
        {eStatistics, Tag::QDC_CALL_ID, &To::callIdentifier},
        {eStatistics, Tag::QDC_MAC_ADDR, &To::macAddress},
    }};
}();

}  // namespace vireo
