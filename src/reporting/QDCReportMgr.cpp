#include "reporting/QDCReportMgr.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include "LocalMgmtIfc.h"
#include "LogMacros.h"
#include "data/ManageableData.h"
#include "reporting/TrapItem.h"
#include "snmp/SNMPQOSTrapDataItem.h"
#include "snmp/SNMPTrapData.h"

namespace vireo {
namespace {

constexpr int kChannels = 6;

/// The number that the text begins with, behind white space and "+". Deliberate: what follows it
/// does not matter, "12 ms" is 12. A text that begins otherwise, also with "-", is 0 with a line.
std::uint32_t stoui(const std::string& text) {
    std::string_view digits = text;
    digits.remove_prefix(std::min(digits.find_first_not_of(" \t\n\v\f\r"), digits.size()));
    if (digits.starts_with('+')) {
        digits.remove_prefix(1);
    }
    std::uint32_t number = 0;
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (result.ec != std::errc()) {
        VCMS_LOG(kLogError, "stoui - conversion failed for value: '%s'", text.c_str());
        return 0;
    }
    return number;
}

void warnOfLongText(const char* tag, const std::string& text) {
    if (text.size() > SNMPQOSTrapDataItem::kLongestText) {
        VCMS_LOG(kLogWarning, "QDCReportMgr: of the %zu bytes of '%s' the first %zu are sent",
                 text.size(), tag, SNMPQOSTrapDataItem::kLongestText);
    }
}

}  // namespace

QDCReportMgr::QDCReportMgr(LocalMgmtIfc* service) : m_service(service) {
    if (m_service == nullptr) {
        return;
    }
    for (int channel = 1; channel <= kChannels; ++channel) {
        const std::string tag = QosStatistics::QDC_QOS_STATISTICS + std::to_string(channel);
        VCMS_LOG(kLogDebug, "QDCReportMgr::QDCReportMgr() - observing tag '%s'.\n", tag.c_str());
        // Each channel in a record of its own, so that each is a trap of its own.
        m_service->observeManageableData(tag, this, false);
    }
}

bool QDCReportMgr::manageableDataChanged(ManageableData& record) {
    VCMS_LOG(kLogDebug, "QDCReportMgr::manageableDataChanged() - changedTag = '%s'.\n",
             record.getRootId().c_str());
    return sendQDCReport(record);
}

bool QDCReportMgr::sendQDCReport(const ManageableData& data) {
    SNMPTrapData trap;
    buildQDCReport(data, trap);
    VCMS_LOG(kLogDebug, "QDCReportMgr::sendQDCReport() - about to raise specific QDC trap\n");
    const bool isSent =
        m_service != nullptr &&
        m_service->raiseSpecificTrap(LocalMgmtIfc::TRAP_DEST_QDC_COLLECTION_UNIT, trap);
    // Deliberate: the line has its misspelling, and is written whatever the result.
    VCMS_LOG(kLogDebug, "QDCReportMgr::sendQDCReport() - sucessfully raised specific QDC trap\n");
    return isSent;
}

void QDCReportMgr::buildQDCReport(const ManageableData& data, SNMPTrapData& trap) {
    VCMS_LOG(kLogDebug, "QDCReportMgr::buildQDCReport() - about to build specific QDC trap\n");
    trap.setSpecificTrapNo(specificTrapNo(data));
    auto item = std::make_unique<SNMPQOSTrapDataItem>();
    fillFields(data, item->fields);
    trap.addSNMPTrapDataItem(std::move(item));
}

void QDCReportMgr::fillFields(const ManageableData& data, QosTrapFields& fields) {
    for (const QosTrapRow& row : kQosTrapRows) {
        std::string value = row.source == QosFieldSource::eItem
                                ? getStringValueFromVCMS(row.tag)
                                : getStringValueFromMPS(data, row.tag);
        if (row.isText()) {
            warnOfLongText(row.tag, value);
            fields.*row.text = std::move(value);
        } else {
            fields.*row.number = stoui(value);
        }
    }
}

int QDCReportMgr::specificTrapNo(const ManageableData& data) {
    const std::uint32_t number = getUintValueFromMPS(data, QosStatistics::QDC_SPECIFIC_TRAP_TYPE);
    if (number > static_cast<std::uint32_t>(std::numeric_limits<int>::max())) {
        VCMS_LOG(kLogError, "QDCReportMgr: no trap can have the specific number %u, 0 is sent",
                 number);
        return 0;
    }
    return static_cast<int>(number);
}

std::string QDCReportMgr::getStringValueFromVCMS(const char* tag) {
    std::optional<std::string> value = TrapItem::read(m_service, tag);
    if (!value) {
        VCMS_LOG(kLogError, "getValueFromVCMS() - failed for tag: %s", tag);
    }
    return std::move(value).value_or(std::string());
}

std::string QDCReportMgr::getStringValueFromMPS(const ManageableData& data, const char* tag) {
    std::string value;
    if (!data.interogate(data.getRootId(), tag, value)) {
        VCMS_LOG(kLogError, "getValueFromMPS() - failed for path: %s", tag);
    }
    return value;
}

std::uint32_t QDCReportMgr::getUintValueFromMPS(const ManageableData& data, const char* tag) {
    return stoui(getStringValueFromMPS(data, tag));
}

}  // namespace vireo
