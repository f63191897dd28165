#include <gmock/gmock.h>

#include "unit/files/DownloadHouse.h"

namespace vireo::test {
namespace {

using testing::ElementsAre;
using Ifc = LocalMgmtIfc;
using DownloadStarts = DownloadHouse;

constexpr auto kRinger = Ifc::FILETYPE_RINGER;
constexpr auto kPicture = Ifc::FILETYPE_PICTURE;
constexpr auto kSoftware = Ifc::FILETYPE_SOFTWARE;

TEST_F(DownloadStarts, NoFormStartsDuringATransferOrABurnAndTheRunningOneGoesOn) {
    const auto expectRefusals = [this](int progress) {
        ports.forgetLines();
        const std::size_t asked = transfer.requests.size();
        EXPECT_FALSE(startPlain(kPicture));
        EXPECT_FALSE(startBySettings(kPicture));
        EXPECT_FALSE(startFrom(kPicture, true));
        EXPECT_FALSE(fetch(kPicture));
        EXPECT_EQ(ports.count(kLogWarning, "Download not allowed, a download is in progress\n"), 4);
        EXPECT_EQ(transfer.requests.size(), asked);
        EXPECT_EQ(service.retrievePhoneBusyStatus(), 0U);
        EXPECT_EQ(service.requestCurrentDownloadStatus(kSoftware, "f"), progress);
    };
    ASSERT_TRUE(startFrom(kSoftware));
    transfer.runToEnd([this](ScriptedWork&) { transfer.tell(20); });
    expectRefusals(20);
    transfer.complete("image");
    ASSERT_EQ(image.burns, 1);
    expectRefusals(100);
    image.runToEnd([this](ScriptedWork&) { image.tell(30); });
    expectRefusals(30);
    image.runToEnd([this](ScriptedWork&) { image.tell(99); });
    EXPECT_THAT(follower.texts(), ElementsAre("20", "40", "f", "30", "99"));
    EXPECT_THAT(remote.texts(), ElementsAre("20", "40", "100", "30", "99"));
    EXPECT_TRUE(startFrom(kPicture));
    transfer.fail();
}

TEST_F(DownloadStarts, ACallRefusesSoftwareAloneUnlessItIsOverridden) {
    const struct {
        unsigned busy;
        Ifc::eFiletype type;
        bool overrides;
        bool isStarted;
    } rows[] = {{1, kSoftware, false, false},
                {1, kSoftware, true, true},
                {1, kPicture, false, true},
                {2, kSoftware, false, true},
                {512, kSoftware, false, true}};
    for (const auto& row : rows) {
        service.setPhoneBusyStatus(row.busy);
        EXPECT_EQ(startFrom(row.type, row.overrides), row.isStarted) << &row - rows;
        if (row.isStarted) {
            transfer.fail();
        }
        EXPECT_EQ(service.retrievePhoneBusyStatus(), row.busy & ~512U);
        service.clearPhoneBusyStatus(row.busy);
    }
    EXPECT_EQ(ports.count(kLogWarning, "Download not allowed, phone is busy\n"), 1);
}

TEST_F(DownloadStarts, TheWaitingFormIsRefusedWithinAWriteOfSeveralItems) {
    TestAgent owner;
    std::optional<bool> result;
    owner.onSet = [&](ManageableData&) {
        result = fetch(kPicture);
        return true;
    };
    EXPECT_TRUE(service.registerManagementIdentity("MediaMgmtId", &owner));
    ManageableData record;
    record.populate("handset-volume", "3");
    record.populate("headset-volume", "3");
    service.setData(record);
    EXPECT_EQ(result, false);
    EXPECT_EQ(ports.count(kLogWarning, "it would be waited for within a write"), 2);
    EXPECT_TRUE(transfer.requests.empty());
}

TEST_F(DownloadStarts, AFailedStartLeavesEverythingAsItWas) {
    ASSERT_TRUE(startFrom(kPicture, false, "old"));
    transfer.complete("f");
    const struct {
        Ifc::eFiletype type;
        const char* file;
        Ifc::eDownloadProtocol protocol;
        const char* line;
    } rows[] = {
        {kRinger, "f", Ifc::DOWNLOAD_HTTPS, "No certificates to download over HTTPS with"},
        {kRinger, "f", static_cast<Ifc::eDownloadProtocol>(3), "Download protocol 3 not supported"},
        {Ifc::FILETYPE_RESERVED_8, "f", Ifc::DOWNLOAD_FTP, "File type 8 unsupported"},
        {kRinger, "dir/", Ifc::DOWNLOAD_FTP, "\"dir/\" names no file"},
        {kRinger, "..", Ifc::DOWNLOAD_FTP, "\"..\" names no file"},
        {kRinger, "f", Ifc::DOWNLOAD_FTP, "it is refused"}};
    transfer.isRefusing = true;
    for (const auto& row : rows) {
        EXPECT_FALSE(startFrom(row.type, false, row.file, row.protocol));
        EXPECT_EQ(ports.count(kLogError, row.line), 1) << row.line;
    }
    EXPECT_EQ(service.requestCurrentDownloadStatus(kPicture, "old"), 100);
    EXPECT_EQ(service.requestCurrentDownloadStatus(kRinger, ""), -1);
    EXPECT_TRUE(service.requestShutdown());
    EXPECT_FALSE(service.progressNotify(-1)) << "nothing is under way";
    EXPECT_EQ(get("dl-pic-last-status"), "1");
    EXPECT_EQ(follower.texts().size(), 2U);
}

TEST_F(DownloadStarts, SettingsSayWhereAFileComesFrom) {
    context.others["CertificateMgmtSvcIfc"] = &certificates;
    const struct {
        std::vector<std::pair<const char*, const char*>> items;
        const char* from;  // transport, server, port, path; empty: not started
    } rows[] = {
        {{{"addr", "own"}, {"method", "1"}, {"port", "2121"}, {"path", "p"}}, "ftp own 2121 p"},
        {{{"method", "fTp"}, {"base-url", "https://b/c"}}, "ftp own 2121 p"},
        {{{"method", "2"}}, "https https://b/c  "},
        {{{"method", "Https"}, {"base-url", ""}}, "https own 2121 p"},
        {{{"method", "3"}}, ""},
        {{{"method", ""}}, ""},
        {{{"use-defaults", "true"}}, "ftp common 21 c"},
        {{{"use-defaults", "TRUE"}, {"method", "FTP"}, {"path", ""}}, "ftp own 2121 "}};
    set("dl-ftp-addr", "common");
    set("dl-ftp-path", "c");
    set("dl-rng-use-defaults", "false");
    set("dl-rng-file", "dir/f");
    set("dl-rng-username", "a@b");
    set("dl-rng-password", "p/w:#");
    for (const auto& row : rows) {
        SCOPED_TRACE(row.from);
        for (const auto& [item, value] : row.items) {
            set("dl-rng-" + std::string(item), value);
        }
        transfer.requests.clear();
        const bool isStarted = startBySettings(kRinger);
        ASSERT_EQ(isStarted, *row.from != '\0');
        if (isStarted) {
            const TransferRequest& got = transfer.requests.at(0);
            EXPECT_EQ((got.transport == TransportType::eFtp ? "ftp " : "https ") + got.server +
                          ' ' + got.port + ' ' + got.sourcePath,
                      row.from);
            const bool isOwn = got.server != "common";
            EXPECT_EQ(got.userName, isOwn ? "a@b" : "anonymous");
            EXPECT_EQ(got.password, isOwn ? "p/w:#" : "");
            EXPECT_EQ(got.fileName, "dir/f");
            EXPECT_EQ(got.localPath, stored("ringtones/f"));
            transfer.fail();
        }
    }
}

}  // namespace
}  // namespace vireo::test
