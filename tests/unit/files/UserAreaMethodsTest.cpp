#include <gmock/gmock.h>

#include "device/MemoryInfo.h"
#include "unit/files/AreaHouse.h"

namespace vireo::test {
namespace {

/// The areas, worked on by message. What is done to them is tested without.
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

TEST_F(UserAreaMethodsTest, WorkOnTheFilesOfTheUserThatIsMeant) {
    put("images/own", "x");
    put("visitor/images/own", "x");
    ASSERT_TRUE(becomes("visitorUser"));
    EXPECT_TRUE(isDeleted(Ifc::FILETYPE_PICTURE, "own"));
    EXPECT_FALSE(isDeleted(Ifc::FILETYPE_PICTURE, "own"));
    EXPECT_EQ(tree(), (Tree{{"images/own", "=x"}}));
    ASSERT_TRUE(becomes("anybody"));
    EXPECT_TRUE(isDeleted(Ifc::FILETYPE_PICTURE, "own"));

    put("phd/own", "x");
    put("visitor/phd/own", "x");
    EXPECT_FALSE(isCleaned("no such type", Ifc::USER_VISITOR));
    EXPECT_TRUE(isCleaned("phd", Ifc::USER_VISITOR));
    EXPECT_EQ(tree(), (Tree{{"phd/own", "=x"}}));
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
    MemoryInfo info = space();
    for (const char* text : {"", "1;1", "1;x1;1", "1;11;12;", "2;-11;1"}) {
        EXPECT_FALSE(info.deserialize(text)) << text;
    }
    EXPECT_EQ(info.totalBytes(), disk.capacity) << "what cannot be read changes nothing";
    failing.failAt(1);
    EXPECT_EQ(space().totalBytes(), 0U);
    failing.failAt(1);
    EXPECT_TRUE(call(name).getBoolParameter("result", Parameter::eOut));
}

}  // namespace
}  // namespace vireo::test
