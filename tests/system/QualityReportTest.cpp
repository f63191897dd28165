#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <sstream>
#include <stdexcept>

#include "snmp/QosTrapFields.h"
#include "support/AgentPeer.h"
#include "support/RunningPhone.h"
#include "support/SnmpTrapDaemon.h"

namespace vireo::test {
namespace {

/// The names that the MIB gives to the rows, in their order.
Words fieldNames() {
    const std::string text = readFile(VIREO_MIBS "/VIREO-PHONE-MIB.txt");
    const std::regex object("(qdc\\w+) OBJECT-TYPE");
    Words names;
    for (std::sregex_iterator match(text.begin(), text.end(), object), end; match != end; ++match) {
        names.push_back("VIREO-PHONE-MIB::" + (*match)[1].str());
    }
    return names;
}

/// The first rows are the thresholds, which come from items of their own.
constexpr std::size_t kThresholds = 12;

/// One trap as snmptrapd has decoded it.
struct Report {
    std::string head;
    Words names;   ///< of the fields, in the order in which they came
    Words values;  ///< "Gauge32: 7" or "STRING: text", without units

    std::string value(const char* tag) const {
        for (std::size_t i = 0; i < kQosTrapRows.size(); ++i) {
            if (kQosTrapRows[i].tag == std::string(tag)) {
                return values.at(i);
            }
        }
        throw std::invalid_argument(tag);
    }
};

Report reportOf(const std::string& line) {
    Report report;
    const std::size_t bar = line.find(" | ");
    report.head = line.substr(0, bar);
    std::istringstream fields(line.substr(bar + 3));
    for (std::string field; std::getline(fields, field, '\t');) {
        const std::size_t equals = field.find(" = ");
        report.names.push_back(field.substr(0, equals));
        std::string value = equals == std::string::npos ? "" : field.substr(equals + 3);
        if (value.starts_with("Gauge32: ")) {
            value.resize(std::min(value.size(), value.find(' ', value.find(' ') + 1)));
        }
        report.values.push_back(std::move(value));
    }
    return report;
}

/// How the head of a report with this specific number is decoded.
std::string headOf(int trapNo) {
    static const Words names = {"qdcReportOfNoKind", "qdcIntervalReport", "qdcSessionReport",
                                "qdcThresholdReport"};
    const auto number = static_cast<std::size_t>(trapNo);
    return "TRAP, SNMP v1, community quality VIREO-PHONE-MIB::vireoPhoneMIB 6 " +
           (number < names.size() ? "VIREO-PHONE-MIB::" + names[number]
                                  : '.' + std::to_string(trapNo));
}

/// Blocks of statistics on a phone whose reports a real snmptrapd reads with the MIB.
class QualityReports : public ::testing::Test {
protected:
    QualityReports() {
        EXPECT_TRUE(
            writeItems(*client, {"qdc-qcu-active=true", "qdc-collection-unit-addr=127.0.0.1",
                                 "qdc-collection-unit-port=" + unit.port(), "qdc-trap-pwd=quality"})
                .result);
    }

    /// Puts a block in which the values of the rows are `base` and their number into the record.
    void addBlock(ManageableData& record, int channel, int trapNo, unsigned base) const {
        const auto part = [](const std::string& tag, const std::string& value) {
            return '<' + tag + '>' + value + "</" + tag + '>';
        };
        std::string parts = part("qdc-specific-trap-type", std::to_string(trapNo));
        for (std::size_t i = kThresholds; i < kQosTrapRows.size(); ++i) {
            const QosTrapRow& row = kQosTrapRows[i];
            parts += part(row.tag,
                          (row.isText() ? "\xc3\xa4 &amp; " : "") + std::to_string(base + i + 1));
        }
        ManageableData schema;
        bool found = false;
        EXPECT_EQ(client->getSchema("qos-statistics", schema, found), CallStatus::eDone);
        record.copySchema("qos-statistics", schema);
        const std::string item = "qdc-qos-statistics" + std::to_string(channel);
        EXPECT_TRUE(record.makeDocument("qos-statistics", item));
        EXPECT_TRUE(record.populate(item, parts));
    }

    bool write(ManageableData& record) const {
        bool result = false;
        return client->setData(record, result) == CallStatus::eDone && result;
    }

    /// All reports that came until now, which have to be so many. Whatever was sent before it came
    /// before this block.
    std::vector<Report> reports(std::size_t count) const {
        ManageableData last;
        addBlock(last, 1, 99, 0);
        EXPECT_TRUE(write(last));
        std::vector<Report> all;
        for (const std::string& line : unit.lines(count + 1)) {
            all.push_back(reportOf(line));
        }
        EXPECT_EQ(all.size(), count + 1);
        EXPECT_EQ(all.empty() ? "" : all.back().head, headOf(99));
        all.resize(std::min(all.size(), count));
        return all;
    }

    static void expectBlock(const Report& report, int trapNo, unsigned base) {
        EXPECT_EQ(report.head, headOf(trapNo));
        EXPECT_EQ(report.names, fieldNames());
        ASSERT_EQ(report.values.size(), kQosTrapRows.size());
        for (std::size_t i = kThresholds; i < kQosTrapRows.size(); ++i) {
            const std::string number = std::to_string(base + i + 1);
            EXPECT_EQ(report.values[i], kQosTrapRows[i].isText() ? "STRING: \xc3\xa4 & " + number
                                                                 : "Gauge32: " + number);
        }
    }

    SnmpTrapDaemon unit{"quality", {}, VIREO_MIBS ":" VIREO_MIBS "/base"};
    RunningPhone phone;
    std::unique_ptr<LocalMgmtClient> client = phone.connect();
};

TEST_F(QualityReports, OneForEachBlockOfEachChannelWithTheThresholdsOfTheMoment) {
    AgentPeer meter(phone, "meter");
    for (int channel = 1; channel <= 6; ++channel) {
        if (channel == 4) {
            ASSERT_TRUE(meter.own("MediaMgmtId", false)) << "the other writes go to an owner";
        }
        ManageableData written;
        addBlock(written, channel, channel - 1, static_cast<unsigned>(channel) * 1000);
        EXPECT_TRUE(write(written));
    }
    Words thresholds;
    for (std::size_t i = 0; i < kThresholds; ++i) {
        thresholds.push_back(std::string(kQosTrapRows[i].tag) + '=' + std::to_string(700 + i));
    }
    EXPECT_TRUE(writeItems(*client, thresholds).result);
    ManageableData announced;
    for (int channel = 6; channel >= 1; --channel) {
        addBlock(announced, channel, channel + 10, static_cast<unsigned>(channel) * 1000 + 500);
    }
    int observers = 0;
    EXPECT_EQ(meter.client().manageableDataChanged(announced, observers), CallStatus::eDone);
    EXPECT_EQ(observers, 6);

    const std::vector<Report> all = reports(12);
    ASSERT_EQ(all.size(), 12U);
    for (int channel = 1; channel <= 6; ++channel) {
        SCOPED_TRACE(channel);
        const auto number = static_cast<std::size_t>(channel);
        const Report& ofWrite = all[number - 1];
        expectBlock(ofWrite, channel - 1, static_cast<unsigned>(channel) * 1000);
        EXPECT_EQ(ofWrite.value("qdc-jb-threshold"), "Gauge32: 20") << "the sample phone's";
        const Report& ofAnnouncement = all[12 - number];
        expectBlock(ofAnnouncement, channel + 10, static_cast<unsigned>(channel) * 1000 + 500);
        for (std::size_t i = 0; i < kThresholds; ++i) {
            EXPECT_EQ(ofAnnouncement.values[i], "Gauge32: " + std::to_string(700 + i));
        }
    }
}

TEST_F(QualityReports, AProgramPublishesOneAsTheGuideShows) {
    const Outcome outcome = ChildProcess::run({VIREO_PUBLISH_QUALITY, phone.socket()});
    EXPECT_EQ(outcome.out, "told 1\n") << outcome.err;
    const std::vector<Report> all = reports(1);
    ASSERT_EQ(all.size(), 1U);
    EXPECT_EQ(all[0].head, headOf(2));
    EXPECT_EQ(all[0].value("qdc-lost-packets"), "Gauge32: 10");
    EXPECT_EQ(all[0].value("qdc-call-id"), "STRING: call-17");
}

}  // namespace
}  // namespace vireo::test
