#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "../items/ItemHouse.h"
#include "reporting/QDCReportMgr.h"
#include "snmp/QosTrapFields.h"
#include "snmp/SNMPTrapData.h"

namespace vireo::test {
namespace {

using ::testing::ElementsAre;

/// The service with items in a map; puts down what is observed and raised.
struct ReportService : ItemFace {
    ReportService()
        : ItemFace([this](ManageableData& record) { return read(record); }, nullptr, nullptr) {
        onObserve = [this](const std::string& tag, MgmtAgentIfc* agent, bool bulk) {
            observed.push_back(tag + (bulk ? " bulk" : ""));
            observer = agent;
            return 1;
        };
    }

    bool read(ManageableData& record) {
        const auto item = items.find(record.getRootId());
        return item != items.end() && record.populate(item->first, item->second);
    }
    bool raiseSpecificTrap(TrapDest dest, SNMPTrapData& data) override {
        destinations.push_back(dest);
        specificTrapNo = data.specificTrapNo();
        varbinds = data.varbinds();
        return raises;
    }

    std::map<std::string, std::string> items;
    bool raises = true;
    std::vector<std::string> observed;
    MgmtAgentIfc* observer = nullptr;
    std::vector<TrapDest> destinations;
    int specificTrapNo = -1;
    std::vector<TrapVarbind> varbinds;
};

using Values = std::map<std::string, std::string>;

class QDCReportMgrTest : public ::testing::Test {
protected:
    /// A record of the statistics of one channel.
    static ManageableData block(int channel, const Values& values) {
        const auto schema = std::make_shared<DxlSchema>("qos-statistics");
        for (const auto& [tag, value] : values) {
            schema->makeDataNode(schema->buildRoot(), tag, 1, DxlSchema::findDataType("string"),
                                 value);
        }
        schema->finish();
        const std::string item = "qdc-qos-statistics" + std::to_string(channel);
        ManageableData record;
        record.putSchema(schema);
        record.addRootId(item, nullptr);
        EXPECT_TRUE(record.makeDocument("qos-statistics", item));
        return record;
    }

    /// Publishes a block in which each number is its row's and each text says so.
    void publishWhole(int channel, const Values& others = {}) {
        Values values = others;
        values.emplace("qdc-specific-trap-type", "3");
        for (std::size_t i = 0; i < kQosTrapRows.size(); ++i) {
            const QosTrapRow& row = kQosTrapRows[i];
            const std::string value =
                row.isText() ? "text " + std::to_string(i + 1) : std::to_string(1000 + i + 1);
            (row.source == QosFieldSource::eItem ? service.items : values).emplace(row.tag, value);
        }
        publish(channel, values);
    }
    void publish(int channel, const Values& values) {
        ManageableData record = block(channel, values);
        result = manager.manageableDataChanged(record);
    }

    TrapValue field(std::size_t row) const { return service.varbinds.at(row - 1).value; }

    TestPorts ports;
    ReportService service;
    QDCReportMgr manager{&service};
    bool result = false;
};

TEST_F(QDCReportMgrTest, ObservesEachChannelOnceAndByItself) {
    EXPECT_THAT(service.observed,
                ElementsAre("qdc-qos-statistics1", "qdc-qos-statistics2", "qdc-qos-statistics3",
                            "qdc-qos-statistics4", "qdc-qos-statistics5", "qdc-qos-statistics6"));
    EXPECT_EQ(service.observer, &manager);
    EXPECT_EQ(ports.lines(kLogDebug)[5],
              "QDCReportMgr::QDCReportMgr() - observing tag 'qdc-qos-statistics6'.\n");
}

TEST_F(QDCReportMgrTest, SendsAllFieldsInTheirOrderToTheCollectionUnit) {
    ports.forgetLines();
    publishWhole(4);
    EXPECT_TRUE(result);
    EXPECT_THAT(service.destinations, ElementsAre(LocalMgmtIfc::TRAP_DEST_QDC_COLLECTION_UNIT));
    EXPECT_EQ(service.specificTrapNo, 3);
    ASSERT_EQ(service.varbinds.size(), 51U);
    for (std::uint32_t row = 1; row <= 51; ++row) {
        EXPECT_EQ(service.varbinds[row - 1].subIdentifiers.back(), row);
        EXPECT_EQ(field(row), kQosTrapRows[row - 1].isText()
                                  ? TrapValue("text " + std::to_string(row))
                                  : TrapValue(1000 + row));
    }
    EXPECT_THAT(
        ports.lines(kLogDebug),
        ElementsAre("QDCReportMgr::manageableDataChanged() - changedTag = "
                    "'qdc-qos-statistics4'.\n",
                    "QDCReportMgr::buildQDCReport() - about to build specific QDC trap\n",
                    "QDCReportMgr::sendQDCReport() - about to raise specific QDC trap\n",
                    "QDCReportMgr::sendQDCReport() - sucessfully raised specific QDC trap\n"));
    EXPECT_TRUE(ports.lines(kLogError).empty());
}

TEST_F(QDCReportMgrTest, AnEmptyBlockIsSentWithNothingKnown) {
    ports.forgetLines();
    publish(1, {});
    EXPECT_TRUE(result);
    EXPECT_EQ(service.specificTrapNo, 0);
    ASSERT_EQ(service.varbinds.size(), 51U);
    for (std::size_t row = 1; row <= 51; ++row) {
        EXPECT_EQ(field(row), kQosTrapRows[row - 1].isText() ? TrapValue("") : TrapValue(0U))
            << row;
    }
    const auto errors = ports.lines(kLogError);
    EXPECT_EQ(errors.at(0), "getValueFromMPS() - failed for path: qdc-specific-trap-type");
    EXPECT_EQ(errors.at(1), "stoui - conversion failed for value: ''");
    EXPECT_EQ(errors.at(2), "getValueFromVCMS() - failed for tag: qdc-jb-threshold");
    EXPECT_EQ(errors.at(3), "stoui - conversion failed for value: ''");
    EXPECT_EQ(errors.back(), "getValueFromMPS() - failed for path: qdc-mac-addr")
        << "one line for a text";
    EXPECT_EQ(errors.size(), 52U + 42U);
}

TEST_F(QDCReportMgrTest, ReadsANumberAtTheFrontOfAText) {
    const struct {
        const char* text;
        std::uint32_t number;
        bool isConverted;
    } rows[] = {
        {"0", 0, true},
        {"42", 42, true},
        {"007", 7, true},
        {" \t\n42", 42, true},
        {"+42", 42, true},
        {"42 ms", 42, true},
        {"4.9", 4, true},
        {"0x10", 0, true},
        {"2147483648", 2147483648U, true},
        {"4294967295", 4294967295U, true},
        {"4294967296", 0, false},
        {"99999999999999999999999", 0, false},
        {"-5", 0, false},
        {" -0", 0, false},
        {"+-5", 0, false},
        {"+", 0, false},
        {"  ", 0, false},
        {"many", 0, false},
    };
    for (const auto& row : rows) {
        ports.forgetLines();
        publishWhole(1, {{"qdc-good-packets", row.text}});
        EXPECT_EQ(field(26), TrapValue(row.number)) << row.text;
        const auto errors = ports.lines(kLogError);
        if (row.isConverted) {
            EXPECT_TRUE(errors.empty()) << row.text;
        } else {
            EXPECT_THAT(errors, ElementsAre("stoui - conversion failed for value: '" +
                                            std::string(row.text) + "'"));
        }
    }
}

TEST_F(QDCReportMgrTest, ASpecificNumberThatNoTrapCanHaveIsNone) {
    publishWhole(1, {{"qdc-specific-trap-type", "2147483647"}});
    EXPECT_EQ(service.specificTrapNo, 2147483647);
    publishWhole(1, {{"qdc-specific-trap-type", "2147483648"}});
    EXPECT_EQ(service.specificTrapNo, 0);
    EXPECT_EQ(ports.count(kLogError, "specific number 2147483648"), 1);
}

TEST_F(QDCReportMgrTest, SaysThatALongTextIsCut) {
    publishWhole(1, {{"qdc-call-id", std::string(255, 'c')}});
    EXPECT_TRUE(ports.lines(kLogWarning).empty());
    publishWhole(1, {{"qdc-call-id", std::string(256, 'c')}});
    EXPECT_EQ(field(50), TrapValue(std::string(255, 'c')));
    EXPECT_EQ(ports.count(kLogWarning, "'qdc-call-id'"), 1);
}

TEST_F(QDCReportMgrTest, SaysSucessfullyAlsoOfAReportThatWasNotSent) {
    service.raises = false;
    publishWhole(2);
    EXPECT_FALSE(result);
    EXPECT_EQ(ports.count(kLogDebug, "sendQDCReport() - sucessfully raised"), 1);
}

TEST(QDCReportMgr, WithoutAServiceReadsAndSendsNothing) {
    const TestPorts ports;
    QDCReportMgr manager(nullptr);
    ManageableData record;
    record.setRootId("qdc-qos-statistics1", nullptr);
    EXPECT_FALSE(manager.manageableDataChanged(record));
    EXPECT_EQ(ports.count(kLogError, "getValueFromVCMS() - failed for tag: "), 12);
}

}  // namespace
}  // namespace vireo::test
