#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <optional>
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
    std::ifstream file(VIREO_MIBS "/VIREO-PHONE-MIB.txt");
    std::stringstream content;
    content << file.rdbuf();
    const std::string text = content.str();
    const std::regex object("(qdc\\w+) OBJECT-TYPE");
    Words names;
    for (std::sregex_iterator match(text.begin(), text.end(), object), end; match != end; ++match) {
        names.push_back("VIREO-PHONE-MIB::" + (*match)[1].str());
    }
    return names;
}

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

    /// The parts of a block with some replaced; a part without value is left out.
    using Parts = std::map<std::string, std::optional<std::string>>;

    static std::string item(int channel) { return "qdc-qos-statistics" + std::to_string(channel); }

    /// Puts a block in which the values of the rows are `base` and their number into the record.
    void addBlock(ManageableData& record, int channel, int trapNo, unsigned base,
                  const Parts& others = {}) const {
        std::string parts;
        const auto add = [&](const std::string& tag, const std::string& value) {
            const auto other = others.find(tag);
            const std::optional<std::string> wanted =
                other == others.end() ? std::optional(value) : other->second;
            if (wanted) {
                parts += '<' + tag + '>' + *wanted + "</" + tag + '>';
            }
        };
        add("qdc-specific-trap-type", std::to_string(trapNo));
        for (std::size_t i = 12; i < kQosTrapRows.size(); ++i) {
            const QosTrapRow& row = kQosTrapRows[i];
            add(row.tag, (row.isText() ? "text " : "") + std::to_string(base + i + 1));
        }
        ManageableData schema;
        bool found = false;
        EXPECT_EQ(client->getSchema("qos-statistics", schema, found), CallStatus::eDone);
        record.copySchema("qos-statistics", schema);
        EXPECT_TRUE(record.makeDocument("qos-statistics", item(channel)));
        EXPECT_TRUE(record.populate(item(channel), parts));
    }

    bool write(ManageableData& record) const {
        bool result = false;
        return client->setData(record, result) == CallStatus::eDone && result;
    }

    /// All reports that came until now, which have to be so many. Whatever was sent before it came
    /// before this block.
    std::vector<Report> reports(std::size_t count) {
        ManageableData last;
        addBlock(last, 1, 99, 0);
        EXPECT_TRUE(write(last));
        std::vector<Report> all;
        for (const std::string& line : unit.lines(m_taken + count + 1)) {
            all.push_back(reportOf(line));
        }
        all.erase(all.begin(),
                  all.begin() + static_cast<std::ptrdiff_t>(std::min(m_taken, all.size())));
        EXPECT_EQ(all.size(), count + 1);
        m_taken += all.size();
        EXPECT_EQ(all.empty() ? "" : all.back().head, headOf(99));
        all.resize(std::min(all.size(), count));
        return all;
    }

    static void expectBlock(const Report& report, int trapNo, unsigned base) {
        EXPECT_EQ(report.head, headOf(trapNo));
        EXPECT_EQ(report.names, fieldNames());
        ASSERT_EQ(report.values.size(), 51U);
        for (std::size_t i = 12; i < kQosTrapRows.size(); ++i) {
            const std::string number = std::to_string(base + i + 1);
            EXPECT_EQ(report.values[i],
                      kQosTrapRows[i].isText() ? "STRING: text " + number : "Gauge32: " + number);
        }
    }

    SnmpTrapDaemon unit{"quality", {}, VIREO_MIBS ":" VIREO_MIBS "/base"};
    RunningPhone phone;
    std::unique_ptr<LocalMgmtClient> client = phone.connect();

private:
    std::size_t m_taken = 0;
};

TEST_F(QualityReports, OneForEachBlockOfEachChannelByWriteAndByAnnouncement) {
    AgentPeer meter(phone, "meter");
    for (int channel = 1; channel <= 6; ++channel) {
        if (channel == 4) {
            ASSERT_TRUE(meter.own("MediaMgmtId", false)) << "the other writes go to an owner";
        }
        const auto base = static_cast<unsigned>(channel) * 1000;
        ManageableData written;
        addBlock(written, channel, channel, base);
        EXPECT_TRUE(write(written));
        ManageableData announced;
        addBlock(announced, channel, channel + 10, base + 500);
        int observers = 0;
        EXPECT_EQ(meter.client().manageableDataChanged(announced, observers), CallStatus::eDone);
        EXPECT_EQ(observers, 1);
    }
    const std::vector<Report> all = reports(12);
    ASSERT_EQ(all.size(), 12U);
    for (int channel = 1; channel <= 6; ++channel) {
        SCOPED_TRACE(channel);
        const auto number = static_cast<unsigned>(channel);
        expectBlock(all[number * 2 - 2], channel, number * 1000);
        expectBlock(all[number * 2 - 1], channel + 10, number * 1000 + 500);
    }
}

TEST_F(QualityReports, CarryTheThresholdsOfTheMoment) {
    const auto publish = [this] {
        ManageableData block;
        addBlock(block, 2, 1, 0);
        EXPECT_TRUE(write(block));
    };
    publish();
    Words assignments;
    for (std::size_t i = 0; i < 12; ++i) {
        assignments.push_back(std::string(kQosTrapRows[i].tag) + '=' + std::to_string(700 + i));
    }
    EXPECT_TRUE(writeItems(*client, assignments).result);
    publish();
    const std::vector<Report> all = reports(2);
    ASSERT_EQ(all.size(), 2U);
    EXPECT_EQ(all[0].value("qdc-jb-threshold"), "Gauge32: 20") << "the sample phone's";
    for (std::size_t i = 0; i < 12; ++i) {
        EXPECT_EQ(all[1].values[i], "Gauge32: " + std::to_string(700 + i));
    }
}

TEST_F(QualityReports, TwoChannelsInOneRecordAreTwo) {
    ManageableData written;
    addBlock(written, 3, 2, 3000);
    addBlock(written, 5, 3, 5000);
    EXPECT_TRUE(write(written));
    ManageableData announced;
    addBlock(announced, 6, 1, 6000);
    addBlock(announced, 1, 2, 1000);
    int observers = 0;
    EXPECT_EQ(client->manageableDataChanged(announced, observers), CallStatus::eDone);
    EXPECT_EQ(observers, 2);
    const std::vector<Report> all = reports(4);
    ASSERT_EQ(all.size(), 4U);
    expectBlock(all[0], 2, 3000);
    expectBlock(all[1], 3, 5000);
    expectBlock(all[2], 1, 6000);
    expectBlock(all[3], 2, 1000);
}

TEST_F(QualityReports, WhatIsMissingOrNoNumberIsSentAsNothing) {
    ManageableData block;
    addBlock(block, 4, 0, 0,
             {{"qdc-specific-trap-type", std::nullopt},
              {"qdc-lost-packets", std::nullopt},
              {"qdc-call-id", std::nullopt},
              {"qdc-good-packets", "many"},
              {"qdc-max-jitter", "-5"},
              {"qdc-round-trip-delay", "12 ms"},
              {"qdc-ssrc-receiving", "4294967295"},
              {"qdc-ssrc-sending", "4294967296"},
              {"qdc-local-port", ""},
              {"qdc-subscriber-number", "4711 &amp; \xc3\xa4"},
              {"qdc-version", std::string(300, 'v')}});
    EXPECT_TRUE(write(block));
    const std::vector<Report> all = reports(1);
    ASSERT_EQ(all.size(), 1U);
    EXPECT_EQ(all[0].head, headOf(0));
    EXPECT_EQ(all[0].names, fieldNames());
    EXPECT_EQ(all[0].value("qdc-lost-packets"), "Gauge32: 0");
    EXPECT_EQ(all[0].value("qdc-call-id"), "STRING: ");
    EXPECT_EQ(all[0].value("qdc-good-packets"), "Gauge32: 0");
    EXPECT_EQ(all[0].value("qdc-max-jitter"), "Gauge32: 0");
    EXPECT_EQ(all[0].value("qdc-round-trip-delay"), "Gauge32: 12");
    EXPECT_EQ(all[0].value("qdc-ssrc-receiving"), "Gauge32: 4294967295");
    EXPECT_EQ(all[0].value("qdc-ssrc-sending"), "Gauge32: 0");
    EXPECT_EQ(all[0].value("qdc-local-port"), "Gauge32: 0");
    EXPECT_EQ(all[0].value("qdc-subscriber-number"), "STRING: 4711 & \xc3\xa4");
    EXPECT_EQ(all[0].value("qdc-version"), "STRING: " + std::string(255, 'v'));
    EXPECT_EQ(all[0].value("qdc-remote-port"), "Gauge32: 20") << "and the others as they are";
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
