#include <gmock/gmock.h>

#include "device/MemoryInfo.h"
#include "unit/files/AreaHouse.h"

namespace vireo::test {
namespace {

/// The areas, worked on by message.
class UserAreaMethodsTest : public AreaHouse {
protected:
    /// The result of a reply that holds nothing else.
    bool resultOf(const Method& request) {
        const Method reply = call(request);
        EXPECT_EQ(reply.name(), request.name());
        EXPECT_EQ(reply.parameters().size(), 1U);
        return reply.getBoolParameter("result", Parameter::eOut);
    }
    bool becomes(const char* user) {
        Method request("changeCurrentUser", Method::eRequest);
        request.addStringParameter("userType", Parameter::eIn, user);
        return resultOf(request);
    }
    bool isDeleted(int type, const std::string& name) {
        Method request("deleteFile", Method::eRequest);
        request.addIntParameter("fileType", Parameter::eIn, type);
        request.addStringParameter("filename", Parameter::eIn, name);
        return resultOf(request);
    }
    bool isCleaned(const char* type, int user) {
        Method request("cleanupUserData", Method::eRequest);
        request.addStringParameter("filetype", Parameter::eIn, type);
        request.addIntParameter("userType", Parameter::eIn, user);
        return resultOf(request);
    }
};

TEST_F(UserAreaMethodsTest, DeletesAFileOfTheCurrentUser) {
    deploy("images/default");
    link("/Vireo_Deploy/images/default", "images/default");
    put("images/own", "x");
    put("ringtones/own", "x");
    put("visitor/images/own", "x");
    ASSERT_TRUE(becomes("visitorUser"));
    EXPECT_TRUE(isDeleted(Ifc::FILETYPE_PICTURE, "own"));
    EXPECT_FALSE(exists("visitor/images/own"));
    ASSERT_TRUE(becomes("anybody"));
    EXPECT_TRUE(exists("images/own"));
    EXPECT_TRUE(isDeleted(Ifc::FILETYPE_PICTURE, "own"));
    EXPECT_TRUE(isDeleted(Ifc::FILETYPE_PICTURE, "default"));
    EXPECT_THAT(mobility.notes, ::testing::Contains("gone own").Times(2));
    for (const char* wrong : {"own", "", "..", "../ringtones/own"}) {
        EXPECT_FALSE(isDeleted(Ifc::FILETYPE_PICTURE, wrong)) << wrong;
    }
    const Tree left = tree();
    EXPECT_EQ(left.count("images/default"), 0U);
    EXPECT_EQ(left.at("deleted/images/default"), ">/Vireo_Deploy/images/default");
    EXPECT_EQ(left.at("ringtones/own"), "=x");
}

TEST_F(UserAreaMethodsTest, CleansOneTypeOfOneUser) {
    const struct {
        const char* name;
        const char* directory;
        bool isCleaned;
    } rows[] = {{"images", "images/", true},    {"screensaver", "screensavers/", true},
                {"ringer", "ringtones/", true}, {"jad", "jad/", true},
                {"phd", "phd/", true},          {"moh", "music/", false},
                {"ldap", "ldap/", false},       {"no such type", "", false}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        std::filesystem::remove_all(stored(""));
        Tree before;
        for (const std::string area : {"", "visitor/"}) {
            for (const auto& each : rows) {
                put(area + each.directory + "own", "x");
                before[area + each.directory + "own"] = "=x";
            }
        }
        if (row.isCleaned) {
            before.erase(std::string("visitor/") + row.directory + "own");
        }
        EXPECT_EQ(isCleaned(row.name, Ifc::USER_VISITOR), row.isCleaned);
        EXPECT_EQ(tree(), before);
    }
}

TEST_F(UserAreaMethodsTest, ClearsTheDataOfAMobileUser) {
    deploy("images/default");
    for (const char* path : {"images/own", "ringtones/own", "visitor/images/own",
                             "visitor/screensavers/own", "visitor/ringtones/own"}) {
        put(path, "x");
    }
    link("/Vireo_Deploy/images/default", "deleted/images/default");
    link("/Vireo_Deploy/images/default", "visitor/deleted/images/default");
    EXPECT_TRUE(resultOf(Method("clearMobileUserData", Method::eRequest)));
    // Without pictures; its ringers are those of the phone's own user.
    EXPECT_EQ(tree(), (Tree{{"deleted/images/default", ">/Vireo_Deploy/images/default"},
                            {"images/own", "=x"},
                            {"ringtones/own", "=x"},
                            {"visitor/ringtones/own", ">/files/ringtones/own"}}));
}

TEST_F(UserAreaMethodsTest, SaysWhatTheStorageIsCalledAndHowLargeItIs) {
    Method name("getIDAndDisplayName", Method::eRequest);
    name.addStringParameter("identifier", Parameter::eInOut, "old");
    name.addStringParameter("displayname", Parameter::eInOut, "old");
    Method reply = call(name);
    EXPECT_TRUE(reply.getBoolParameter("result", Parameter::eOut));
    EXPECT_EQ(reply.getStringParameter("identifier", Parameter::eOut), "/files/");
    EXPECT_NE(reply.getStringParameter("displayname", Parameter::eOut), "old");

    const auto space = [this] {
        const Method answer = call(Method("getUserDataSpaceInfo", Method::eRequest));
        EXPECT_EQ(answer.parameters().size(), 2U);
        EXPECT_EQ(answer.getStringParameter("Acknowledge", Parameter::eOut), "SUCCESS");
        MemoryInfo info;
        EXPECT_TRUE(info.deserialize(answer.getStringParameter("spaceinfo", Parameter::eOut)));
        return info;
    };
    const auto disk = std::filesystem::space(directory.path());
    EXPECT_EQ(space().totalBytes(), disk.capacity);
    EXPECT_LE(space().freeBytes(), disk.capacity);
    failing.failAt(1);
    EXPECT_EQ(space().totalBytes(), 0U);
}

}  // namespace
}  // namespace vireo::test
