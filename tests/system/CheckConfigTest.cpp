#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "support/ChildProcess.h"
#include "support/Files.h"
#include "support/TemporaryDirectory.h"

namespace vireo::test {
namespace {

namespace fs = std::filesystem;

Outcome check(const std::string& directory) {
    return ChildProcess::run({VIREOD, "--check-config", "--config", directory});
}

/// A change of the sample phone, and what the check has to say about it.
struct Mistake {
    const char* file;
    std::string text;         ///< empty: at the end of the file
    std::string replacement;  ///< instead of `text`; what stands there before stays without it
    std::vector<std::string> findings;  ///< what each line starts with, in order
    int exitCode = 1;
};

Mistake mistake(const char* file, std::string text, std::string replacement,
                std::vector<std::string> findings, int exitCode = 1) {
    return {file, std::move(text), std::move(replacement), std::move(findings), exitCode};
}

std::string row(const std::string& tag, const std::string& schema = "text") {
    return "<item><rootId>" + tag + "</rootId><schema>" + schema + "</schema></item>";
}

std::string mapping(const std::string& tag, const std::string& node, const std::string& table,
                    const std::string& column) {
    return "<item><rootId>" + tag + "</rootId><nodeId>" + node + "</nodeId><dasSchemaName>" +
           table + "</dasSchemaName><dasItemName>" + column + "</dasItemName></item>";
}

void make(const fs::path& directory, const Mistake& mistake) {
    const fs::path file = directory / mistake.file;
    std::string content = readFile(file);
    const std::size_t at = mistake.text.empty() ? content.size() : content.find(mistake.text);
    ASSERT_NE(at, std::string::npos) << mistake.text;
    content.replace(at, mistake.text.size(), mistake.replacement);
    writeFile(file, content);
}

/// Exactly the expected findings, and a last line that counts them.
void expectFindings(const Mistake& mistake, const Outcome& outcome) {
    EXPECT_EQ(outcome.exitCode, mistake.exitCode);
    EXPECT_EQ(outcome.err, "");
    const std::vector<std::string> lines = linesOf(outcome.out);
    ASSERT_EQ(lines.size(), mistake.findings.size() + 1) << outcome.out;
    for (std::size_t i = 0; i < mistake.findings.size(); ++i) {
        EXPECT_TRUE(lines[i].starts_with(mistake.findings[i])) << lines[i];
        EXPECT_NE(lines[i].find("; "), std::string::npos) << "says how to mend it: " << lines[i];
    }
    const auto errors = static_cast<std::size_t>(
        std::count_if(lines.begin(), lines.end(),
                      [](const std::string& line) { return line.starts_with("error: "); }));
    const std::string summary = ": " + std::to_string(errors) + " errors, " +
                                std::to_string(mistake.findings.size() - errors) + " warnings";
    EXPECT_TRUE(lines.back().ends_with(summary)) << lines.back();
}

void expectAll(const std::vector<Mistake>& mistakes) {
    for (const Mistake& mistake : mistakes) {
        SCOPED_TRACE(std::string(mistake.file) + ": " + mistake.text + " -> " +
                     mistake.replacement);
        TemporaryDirectory directory;
        const fs::path config = directory.path() / "config";
        fs::copy(VIREO_CONFIG, config);
        make(config, mistake);
        expectFindings(mistake, check(config));
    }
}

TEST(CheckConfig, TheSamplePhoneFitsTogether) {
    const Outcome outcome = check(VIREO_CONFIG);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.out, "451 items of 11 owners, 3 collections: 0 errors, 0 warnings\n");
    EXPECT_EQ(outcome.err, "");
}

TEST(CheckConfig, NamesFilesAndDocumentsThatAreMissingOrWrong) {
    expectAll({
        mistake("store.xml", "<store>", "<stare>", {"error: store.xml: "}),
        mistake("TimeItems.xml", "<dxl>", "<dxl><",
                {"error: loading: import of \"TimeItems.xml\" failed",
                 "error: vcmsServiceList: there is no document \"TimeItemMap\""}),
        mistake("extra.xml", "", "<dxl/>", {"error: extra.xml: nothing imports this file"}),
        mistake("vcmsInit.xml", "<import>OwnSchemas.xml</import>",
                "<import>OwnSchemas.xml</import><import>none.xml</import>",
                {"error: loading: import of \"none.xml\" failed"}),
        mistake(
            "vcmsInit.xml", "<itemMap>TimeItemMap</itemMap>", "",
            {"error: vcmsServiceList: a <service> with <managementId> TimeMgmtId lacks <itemMap>"}),
        mistake("vcmsInit.xml", ">true<", ">True<",
                {"warning: vcmsServiceList: <dontCacheUnlessRegistered> is \"True\""}, 0),
        mistake(
            "vcmsInit.xml", "name=\"vcmsServiceList\"", "name=\"other\"",
            {"error: vcmsInit.xml: there is no document \"vcmsServiceList\"",
             // Nothing of what it names is read.
             "error: BluetoothItems.xml", "error: CallFailingItems.xml", "error: Collections.xml",
             "error: CommonSchemas.xml", "error: DiagnosticsItems.xml", "error: DirectoryItems.xml",
             "error: DownloadItems.xml", "error: DownloadTable.xml", "error: KeyItems.xml",
             "error: MediaItems.xml", "error: MobilityItems.xml", "error: NetworkItems.xml",
             "error: OwnItems.xml", "error: OwnSchemas.xml", "error: SecurityItems.xml",
             "error: SipItems.xml", "error: SoftwareItems.xml", "error: StoreMapping.xml",
             "error: StoreTables.xml", "error: TelephonyItems.xml", "error: TimeItems.xml",
             "error: TrapItems.xml"}),
        mistake("TimeItems.xml", "<dxl>", "<dxl><schema name=\"text\" type=\"string\"/>",
                {"error: loading: schema \"text\" of \"TimeItems.xml\" left out"}),
    });
}

TEST(CheckConfig, NamesItemsThatAreNotWhatTheyLookLike) {
    const std::string own = "<document name=\"OwnItemMap\" schema=\"itemMap\">";
    const std::string media = "<document name=\"MediaItemMap\" schema=\"itemMap\">";
    expectAll({
        mistake("OwnItems.xml", own, own + row("profile-name"),
                {"error: OwnItemMap: item \"profile-name\" contains \"file-\""}),
        mistake("OwnItems.xml", own, own + row("file-server"),
                {"error: OwnItemMap: item \"file-server\" contains \"file-\""}),
        mistake("OwnItems.xml", own, own + row("file-result-12") + row("locked-config-menus-2"), {},
                0),
        mistake("MediaItems.xml", media, media + row("profile-name"), {}, 0),
        mistake(
            "OwnItems.xml", own, own + row("locked-config-menus-colour"),
            {"error: OwnItemMap: item \"locked-config-menus-colour\" contains the name of a lock "
             "list"}),
        mistake("OwnItems.xml", own, own + row("twice") + row("twice"),
                {"error: OwnItemMap: item \"twice\" belongs to VcmsMgmtId already"}),
        mistake("MediaItems.xml", media, media + row("language"),
                {"error: MediaItemMap: item \"language\" belongs to VcmsMgmtId already, in "
                 "OwnItemMap"}),
        mistake("OwnItems.xml", own, own + row("plain", "missing"),
                {"error: OwnItemMap: item \"plain\" has the unknown schema \"missing\""}),
        mistake("OwnItems.xml", own, own + "<item><rootId>plain</rootId></item>",
                {"error: OwnItemMap: a <item> without <schema> is skipped: plain"}),
        mistake("OwnItems.xml", own,
                own + "<item><rootID>x</rootID><rootId>plain</rootId><schema>text"
                      "</schema></item>",
                {"error: OwnItemMap: <item> has an element <rootID>"}),
        mistake("OwnItems.xml", own, own + row("../up"),
                {"error: loading: item ../up of OwnItemMap"}),
        mistake("OwnItems.xml", own, own + row("TimeItemMap"),
                {"error: loading: item TimeItemMap of OwnItemMap skipped: the name is reserved"}),
    });
}

TEST(CheckConfig, NamesItemsThatTheServiceNeedsAndNobodyMaps) {
    const std::string phd = "<item><rootId>dl-phd-path</rootId><schema>text</schema></item>";
    const std::string busy =
        "<item><rootId>phone-busy-status</rootId><schema>switch-off</schema></item>";
    expectAll({
        mistake("DownloadItems.xml", phd, "",
                {"error: DownloadTableItems: there is no item \"dl-phd-path\"",
                 "error: vcmsServiceList: nothing maps \"dl-phd-path\""}),
        mistake("OwnItems.xml", busy, "",
                {"error: vcmsServiceList: nothing maps \"phone-busy-status\""}),
        mistake("MediaItems.xml", "ringer-audio-file", "ringer-audio",
                {"warning: vcmsServiceList: nothing maps the items for keeping the ringer"}, 0),
        mistake("MediaItems.xml", "qdc-qos-statistics6", "qdc-qos-statistics7",
                {"error: vcmsServiceList: nothing maps \"qdc-qos-statistics6\""}),
    });
}

TEST(CheckConfig, NamesItemsThatOnlyTheServiceItselfCanAnswerFor) {
    TemporaryDirectory directory;
    const fs::path config = directory.path() / "config";
    fs::copy(VIREO_CONFIG, config);
    const std::string busy = row("phone-busy-status", "switch-off");
    make(config, {"OwnItems.xml", busy, "", {}});
    const std::string telephony = "<document name=\"TelephonyItemMap\" schema=\"itemMap\">";
    const Mistake mistake{"TelephonyItems.xml",
                          telephony,
                          telephony + busy,
                          {"error: vcmsServiceList: \"phone-busy-status\" belongs to "
                           "TelephonyMgmtId"}};
    make(config, mistake);
    expectFindings(mistake, check(config));
}

TEST(CheckConfig, NamesMappingsThatTheStoreCannotKeep) {
    const std::string map = "<document name=\"VcmsToDasMapping\" schema=\"VcmsToDasMapping\">";
    const std::string server = "<rootId>sip-server</rootId><nodeId>sip-server</nodeId>";
    const std::string keys = "<document name=\"ProgrammableKeyItems\" schema=\"tableItemMap\">";
    const std::string melody = "<column name=\"RingerMelody\"/>";
    expectAll({
        mistake(
            "StoreMapping.xml", map,
            map + mapping("hardware-type", "hardware-type", "None", "Type"),
            {"error: VcmsToDasMapping: item \"hardware-type\": the store has no table \"None\""}),
        mistake("StoreMapping.xml", map,
                map + mapping("hardware-type", "hardware-type", "PhoneSettings", "Type"),
                {"error: VcmsToDasMapping: item \"hardware-type\": table \"PhoneSettings\" has no "
                 "column "
                 "\"Type\""}),
        mistake("StoreMapping.xml", map,
                map + mapping("hardware-type", "hardware-type", "PhoneSettings", "PhoneName"),
                {"error: VcmsToDasMapping: item \"phone-name\" is kept in the same place as item "
                 "\"hardware-type\""}),
        mistake("StoreMapping.xml", map,
                map + mapping("hardware-type", "hardware-type", "SpeedDials", "Name"),
                {"error: VcmsToDasMapping: item \"hardware-type\": no index value for table "
                 "\"SpeedDials\""}),
        mistake("StoreMapping.xml", map,
                map + mapping("language", "language", "PhoneSettings", "Language"),
                {"error: VcmsToDasMapping: item \"language\", node \"language\" is mapped twice"}),
        mistake("StoreMapping.xml", "<rootId>sip-outbound-proxy</rootId><nodeId>proxy-addr",
                "<rootId>sip-outbound-proxy</rootId><nodeId>proxy-adr",
                {"error: VcmsToDasMapping: item \"sip-outbound-proxy\" has no node \"proxy-adr\""}),
        mistake("StoreMapping.xml", server, "<rootId>vlan-id</rootId><nodeId>vlan-id</nodeId>",
                {"error: VcmsToDasMapping: item \"vlan-id\" belongs to NetworkMgmtId"}),
        mistake(
            "StoreMapping.xml", server,
            "<rootId>phone-busy-status</rootId><nodeId>phone-busy-status</nodeId>",
            {"warning: VcmsToDasMapping: item \"phone-busy-status\" is never read from the store"},
            0),
        mistake("StoreMapping.xml", server, "<rootId>none</rootId><nodeId>none</nodeId>",
                {"error: VcmsToDasMapping: there is no item \"none\""}),
        mistake(
            "store.xml", melody, melody + "<column name=\"Spare\"/>",
            {"warning: store.xml: no item is kept in column \"Spare\" of table \"PhoneSettings\""},
            0),
        mistake("store.xml", "index=\"KeyIndex\"", "index=\"Key\"",
                {"error: VcmsTableList: table \"ProgrammableKeys\" has the index \"Key\""}),
        mistake(
            "StoreTables.xml", "<itemMap>SpeedDialItems<", "<itemMap>Dials<",
            {"error: VcmsTableList: there is no document \"Dials\"",
             "warning: store.xml: no item is kept in column \"Name\" of table \"SpeedDials\"",
             "warning: store.xml: no item is kept in column \"Number\" of table \"SpeedDials\""}),
        mistake("KeyItems.xml", keys,
                keys + "<item><rootId>key-label-1</rootId><dasIndexValue>9</dasIndexValue>"
                       "<dasItemName>Label</dasItemName></item>",
                {"error: ProgrammableKeyItems: item \"key-label-1\" has a row of an indexed table "
                 "already"}),
    });
}

TEST(CheckConfig, NamesCollectionsAndCallFailingItemsThatCannotWork) {
    const std::string rings =
        "<document name=\"RingerSettingItems\" schema=\"collectionDataList\">";
    const std::string list = "schema=\"CallFailingVcmsItems\">";
    const auto member = [&](const std::string& name) {
        return rings + "<rootId>" + name + "</rootId>";
    };
    const auto failing = [&](const std::string& tag) {
        return list + "<item><rootId>" + tag + "</rootId></item>";
    };
    expectAll({
        mistake("Collections.xml", rings, member("none"),
                {"error: RingerSettingItems: member \"none\" of collection \"ringer-settings\" is "
                 "neither"}),
        mistake("Collections.xml", rings, member("ringer-volume"),
                {"warning: RingerSettingItems: \"ringer-volume\" is a member twice"}, 0),
        mistake("Collections.xml", rings, member("ringer-settings"),
                {"error: RingerSettingItems: collection \"ringer-settings\" contains itself: "
                 "ringer-settings > ringer-settings"}),
        mistake("Collections.xml", rings, member("sound-settings"),
                {"error: RingerSettingItems: collection \"ringer-settings\" contains itself: "
                 "ringer-settings > sound-settings > ringer-settings"}),
        mistake("Collections.xml", ">sound-settings<", ">language<",
                {"error: VcmsDataCollection: \"language\" is an item as well"}),
        mistake("Collections.xml", ">sound-settings<", ">ringer-settings<",
                {"error: VcmsDataCollection: collection \"ringer-settings\" is there twice"}),
        mistake("Collections.xml", "<collectionDataList>SoundSettingItems",
                "<collectionDataList>None",
                {"error: VcmsDataCollection: there is no document \"None\""}),
        mistake("CallFailingItems.xml", list, failing("none"),
                {"error: CallFailingVcmsItems: there is no item \"none\""}),
        mistake("CallFailingItems.xml", list, failing("vlan-id"),
                {"warning: CallFailingVcmsItems: item \"vlan-id\" is there twice"}, 0),
        mistake("CallFailingItems.xml", list, failing("phone-busy-status"),
                {"error: CallFailingVcmsItems: item \"phone-busy-status\" would be refused"}),
        mistake("CallFailingItems.xml", list, failing("dl-app-last-status"),
                {"error: CallFailingVcmsItems: item \"dl-app-last-status\" would be refused"}),
    });
}

TEST(CheckConfig, SaysWhyItCannotCheck) {
    const Outcome outcome = ChildProcess::run(
        {VIREOD, "--check-config", "--config", VIREO_CONFIG, "--plugin", "/none.so"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_NE(outcome.err.find("/none.so"), std::string::npos) << outcome.err;
}

}  // namespace
}  // namespace vireo::test
