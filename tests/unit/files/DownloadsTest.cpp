#include <gtest/gtest.h>

#include "unit/files/DownloadHouse.h"

namespace vireo::test {
namespace {

using Ifc = LocalMgmtIfc;
using Downloads = DownloadHouse;

constexpr auto kRinger = Ifc::FILETYPE_RINGER;
constexpr auto kPicture = Ifc::FILETYPE_PICTURE;
constexpr auto kSoftware = Ifc::FILETYPE_SOFTWARE;

TEST_F(Downloads, LimitsHoldToTheByteAndARejectionIsToldOnce) {
    const struct {
        Ifc::eFiletype type;
        const char* place;
        const char* infix;
        std::size_t size;
        int audio;  // -1: nobody can tell
        bool isGood;
        std::size_t heard = 0;
    } rows[] = {{kPicture, "images/f", "pic", 300'000, 1, true},
                {kPicture, "images/f", "pic", 300'001, 0, false},
                {Ifc::FILETYPE_LDAP, "ldap/f", "ldp", 2'000, 1, true},
                {Ifc::FILETYPE_LDAP, "ldap/f", "ldp", 2'001, 0, false},
                // Nothing was asked yet: the service finds the media control with the next row.
                {kRinger, "ringtones/f", "rng", 1'000'000, -1, true},
                {kRinger, "ringtones/f", "rng", 1'000'001, -1, false},
                {kRinger, "ringtones/f", "rng", 1'000'000, 0, true, 2},
                {kRinger, "ringtones/f", "rng", 1'000'001, 0, false},
                {kRinger, "ringtones/f", "rng", 10, 1, false, 1},
                {Ifc::FILETYPE_MUSIC_ON_HOLD, "music/f", "moh", 10, 2, false, 1}};
    const std::string content(1'000'001, 'x');
    Texts told;
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.place) + " " + std::to_string(row.size));
        context.others["MediaControlServiceIfc"] = row.audio < 0 ? nullptr : &media;
        media.answer = row.audio;
        media.asked.clear();
        ports.forgetLines();
        ASSERT_TRUE(startFrom(row.type));
        transfer.complete(content.substr(0, row.size));
        told.insert(told.end(), {"40", row.isGood ? "f" : "-3"});
        EXPECT_EQ(follower.texts(), told);
        EXPECT_EQ(exists(row.place), row.isGood);
        EXPECT_EQ(get("dl-" + std::string(row.infix) + "-last-status"), row.isGood ? "1" : "2");
        EXPECT_EQ(service.requestCurrentDownloadStatus(row.type, "f"), row.isGood ? 100 : -3);
        EXPECT_EQ(media.asked.size(), row.heard);
        EXPECT_EQ(ports.count(kLogWarning, "Maximum size exceeded"), row.size == 2'001 ? 1 : 0);
        EXPECT_EQ(ports.lines(kLogError).size(), row.audio < 0 && row.isGood ? 2U : 0U);
    }
    EXPECT_EQ(remote.texts().size(), 2 * std::size(rows));
}

// That it goes after every ending of a transfer is shown with real servers.
TEST_F(Downloads, TheBusyMarkComesAndGoesOnceWhereNothingStartsOrAnImageIsBurnt) {
    TestAgent observer;
    EXPECT_EQ(service.observeManageableData("phone-busy-status", &observer), 1);
    set("dl-ftp-addr", "server");
    set("dl-app-file", "f");
    set("dl-pic-file", "f");
    for (const auto type :
         {kPicture, Ifc::FILETYPE_HELP, static_cast<Ifc::eFiletype>(-1), kSoftware}) {
        SCOPED_TRACE(type);
        observer.told.clear();
        transfer.isRefusing = type == kPicture;  // the next two have no settings
        EXPECT_EQ(startPlain(type), type == kSoftware);
        if (type == kSoftware) {
            transfer.complete("f");
        }
        EXPECT_EQ(observer.told, (Texts{"phone-busy-status=512", "phone-busy-status=0"}));
        EXPECT_EQ(service.retrievePhoneBusyStatus(), 0U);
    }
}

TEST_F(Downloads, TheWaitingFormAnswersEveryEndAndLeavesNothingBehind) {
    const struct {
        const char* what;
        std::function<void()> script;
        bool isStarted = true;
        std::string file = "f";
        bool result = false;
    } rows[] = {{"fetched",
                 [this] {
                     transfer.put("f");
                     transfer.tell(100);
                 },
                 true, "f", true},
                {"refused", [] {}, false},
                {"not set up", [] {}, true, ".."},
                {"rejected",
                 [this] {
                     transfer.put(std::string(300'001, 'x'));
                     transfer.tell(100);
                 }},
                {"failed", [this] { transfer.tell(-1); }}};
    for (int round = 0; round < 40; ++round) {
        for (const auto& row : rows) {
            SCOPED_TRACE(row.what);
            transfer.isRefusing = !row.isStarted;
            // Also a transfer that ends before its start returns.
            transfer.script = [&](ScriptedWork&) { row.script(); };
            EXPECT_EQ(fetch(kPicture, row.file), row.result);
            transfer.isRefusing = false;
            transfer.script = nullptr;
            ASSERT_TRUE(startFrom(kPicture)) << "returns at once";
            EXPECT_EQ(service.requestCurrentDownloadStatus(kPicture, ""), 0);
            transfer.complete("f");
        }
    }
    EXPECT_EQ(follower.texts().size(), 2 * 40 * std::size(rows));
}

TEST_F(Downloads, AnImageIsBurntOnceWhoeverWantsItAndItsEndIsNotThatOfTheTransfer) {
    const struct {
        const char* what;
        int lastOfBurn;  // 0: it does not start
        int status;
        const char* item;
    } rows[] = {{"burnt", 99, 99, "1"}, {"fails at once", -1, -1, "2"}, {"foreign", 0, -3, "2"}};
    for (const bool isAwaited : {false, true}) {
        for (const auto& row : rows) {
            SCOPED_TRACE(std::string(row.what) + (isAwaited ? ", awaited" : ""));
            Follower own;
            image.burns = 0;
            image.isForThisPhone = row.lastOfBurn != 0;
            image.script = [&](ScriptedWork&) { image.tell(row.lastOfBurn); };
            if (isAwaited) {
                transfer.script = [this](ScriptedWork&) {
                    transfer.put("image");
                    transfer.tell(100);
                };
                EXPECT_EQ(fetch(kSoftware), row.lastOfBurn != 0);
                transfer.script = nullptr;
            } else {
                ASSERT_TRUE(service.startDownload(Ifc::DOWNLOAD_FTP, "", "server", "", "",
                                                  kSoftware, "", "f", &own, false));
                transfer.complete("image");
            }
            image.join();
            EXPECT_EQ(image.burns, row.lastOfBurn != 0 ? 1 : 0);
            EXPECT_EQ(service.requestCurrentDownloadStatus(kSoftware, ""), row.status);
            EXPECT_EQ(get("dl-app-last-status"), row.item);
            EXPECT_EQ(remote.texts().back(), std::to_string(row.status));
            // Nobody hears of it any more, and nothing of it holds up the next one.
            EXPECT_TRUE(service.requestShutdown());
            EXPECT_EQ(own.texts().size(), isAwaited ? 0U : 3U);
            ASSERT_TRUE(startFrom(kPicture));
            transfer.fail();
        }
    }
}

TEST_F(Downloads, WhoIsToldOfTheEndMayStartTheNextOneButNotFromWithin) {
    std::future<bool> next;
    bool isWithin = true;
    follower.onTold = [&] {
        if (next.valid()) {
            return;
        }
        isWithin = startFrom(kPicture);
        next = std::async(std::launch::async, [this] { return startFrom(kPicture); });
    };
    ASSERT_TRUE(startFrom(kPicture));
    transfer.runToEnd([this](ScriptedWork&) { transfer.tell(-1); });
    EXPECT_FALSE(isWithin);
    EXPECT_TRUE(next.get());
    transfer.fail();
}

TEST_F(Downloads, ConsentIsAskedOfWhoIsThereAlone) {
    EXPECT_TRUE(service.requestShutdown());
    ASSERT_TRUE(startFrom(kPicture));
    EXPECT_FALSE(service.requestShutdown());
    follower.consents = true;
    EXPECT_TRUE(service.requestShutdown());
    follower.consents = false;
    Follower other;
    service.peerLeft(other);
    EXPECT_FALSE(service.requestShutdown());
    service.peerLeft(follower);
    EXPECT_TRUE(service.requestShutdown());
    transfer.complete("f");
    EXPECT_TRUE(follower.texts().empty());
    EXPECT_TRUE(exists("images/f"));
}

// Who is told of the end may be gone when it is asked for something.
TEST_F(Downloads, WhoIsBeingToldOfTheEndHasNoSayInAShutdown) {
    const struct {
        const char* what;
        Ifc::eFiletype type;
        int lastOfTransfer;
        int lastOfBurn;  // 0: none
        std::string says;
    } rows[] = {{"fetched", kPicture, 100, 0, "-+"},
                {"failed", kPicture, -1, 0, "-+"},
                {"failed image", kSoftware, -1, 0, "-+"},
                {"burnt", kSoftware, 100, 99, "---+"},
                {"burn failed", kSoftware, 100, -1, "---+"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        std::string says;
        follower.onTold = [&] { says += service.requestShutdown() ? '+' : '-'; };
        ASSERT_TRUE(startFrom(row.type));
        transfer.runToEnd([&](ScriptedWork&) {
            transfer.tell(40);
            transfer.put("f");
            transfer.tell(row.lastOfTransfer);
        });
        if (row.lastOfBurn != 0) {
            image.runToEnd([&](ScriptedWork&) {
                image.tell(30);
                image.tell(row.lastOfBurn);
            });
        }
        EXPECT_EQ(says, row.says);
    }
}

TEST_F(Downloads, OfSomeTypesTheNewFileAloneIsKept) {
    for (const auto type : {Ifc::FILETYPE_LDAP, kPicture}) {
        const bool isSingle = type == Ifc::FILETYPE_LDAP;
        const std::string place = isSingle ? "ldap/" : "images/";
        for (const char* file : {"a", "b"}) {
            transfer.script = [this](ScriptedWork&) {
                transfer.put("f");
                transfer.tell(100);
            };
            EXPECT_TRUE(fetch(type, file));
        }
        EXPECT_EQ(exists(place + "a"), !isSingle);
        EXPECT_TRUE(exists(place + "b"));
    }
}

}  // namespace
}  // namespace vireo::test
