#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <thread>

#include "service/Method.h"
#include "support/Effort.h"
#include "support/RunningPhone.h"

namespace vireo::test {
namespace {

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::AnyOf;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr const char* kKinds[] = {"images/", "screensavers/", "ringtones/", "music/"};
constexpr const char* kTypeNames[] = {"images", "screensaver", "ringer", "moh"};

std::string contentsOf(const fs::path& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

/// A vireod on a directory tree that the test makes.
class UserFilesTest : public ::testing::Test {
protected:
    fs::path stored(const std::string& path) const { return phone.root() + "/data/vireo/" + path; }
    fs::path deployed(const std::string& path) const {
        return phone.root() + "/Vireo_Deploy/" + path;
    }
    static void write(const fs::path& path, const std::string& content) {
        fs::create_directories(path.parent_path());
        fs::remove(path);
        std::ofstream(path, std::ios::binary) << content;
    }
    /// The areas as a person would draw them, on standard output as well.
    std::string show(const std::string& step) const {
        std::set<std::string> lines;
        for (const auto& entry : fs::recursive_directory_iterator(stored(""))) {
            std::string line = entry.path().lexically_relative(stored("")).string();
            if (entry.is_symlink()) {
                const std::string target = fs::read_symlink(entry.path()).string();
                lines.insert(line + " -> " + target.substr(phone.root().size()));
            } else if (entry.is_regular_file()) {
                lines.insert(line + " = " + contentsOf(entry.path()));
            }
        }
        std::string text;
        for (const std::string& line : lines) {
            text += line + '\n';
        }
        std::cout << "-- " << step << '\n' << text;
        return text;
    }
    /// The names that the phone lists.
    std::string list(const std::string& type) const {
        const Outcome outcome = phone.ctl({"files", "list", type});
        EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
        std::istringstream lines(outcome.out);
        std::string names;
        for (std::string line; std::getline(lines, line);) {
            names += fs::path(line).filename().string() + ' ';
        }
        return names;
    }
    /// The four rules of an area: what each default is, and what links lead to.
    void expectRules(const std::string& area) const {
        for (const char* const kind : kKinds) {
            const fs::path own = stored(area + kind);
            const fs::path deleted = stored(area + "deleted/" + kind);
            std::set<std::string> names;
            for (const fs::path& directory : {own, deleted, deployed(kind)}) {
                if (fs::exists(directory)) {
                    for (const auto& entry : fs::directory_iterator(directory)) {
                        names.insert(entry.path().filename());
                    }
                }
            }
            for (const std::string& name : names) {
                SCOPED_TRACE(own / name);
                const bool isLink = fs::is_symlink(own / name);
                const bool isTombstone = fs::is_symlink(deleted / name);
                EXPECT_FALSE(isLink && isTombstone);
                if (!fs::exists(deployed(kind + name))) {
                    EXPECT_FALSE(isLink || isTombstone);
                    continue;
                }
                for (const fs::path& link : {own / name, deleted / name}) {
                    if (fs::is_symlink(link)) {
                        EXPECT_EQ(fs::read_symlink(link), deployed(kind + name));
                    }
                }
                EXPECT_TRUE(isLink || isTombstone || fs::is_regular_file(own / name));
            }
        }
    }
    std::unique_ptr<LocalMgmtClient> connect(LocalMgmtClient::Protocol protocol) const {
        LocalMgmtClient::Options options;
        options.socketPath = phone.socket();
        options.protocol = protocol;
        std::string error;
        auto client = LocalMgmtClient::connect(options, error);
        EXPECT_TRUE(client) << error;
        return client;
    }

    RunningPhone phone{RunningPhone::Prepared{}};
};

TEST_F(UserFilesTest, TheLifeOfADefault) {
    for (const char* const name : {"a", "b", "c"}) {
        write(deployed("images/") / name, name);
    }
    phone.start();
    EXPECT_EQ(show("provisioned"),
              "images/a -> /Vireo_Deploy/images/a\nimages/b -> /Vireo_Deploy/images/b\n"
              "images/c -> /Vireo_Deploy/images/c\n");
    const auto listBy = [this](const std::string& names, const char* step) {
        EXPECT_EQ(list("images"), names) << step;
        expectRules("");
        return show(step);
    };
    listBy("a b c ", "listed");

    EXPECT_EQ(phone.ctl({"files", "delete", "images", "b"}).out, "images: b: deleted\n");
    const std::string buried =
        "deleted/images/b -> /Vireo_Deploy/images/b\nimages/a -> /Vireo_Deploy/images/a\n"
        "images/c -> /Vireo_Deploy/images/c\n";
    EXPECT_EQ(show("b deleted"), buried);
    EXPECT_EQ(listBy("a c ", "listed"), buried);

    phone.crash();
    phone.start();
    EXPECT_EQ(listBy("a c ", "restarted and listed"), buried);
    EXPECT_EQ(phone.ctl({"files", "delete", "images", "b"}).exitCode, 1);

    write(deployed("images/d"), "d");
    EXPECT_THAT(listBy("a c ", "d deployed and listed"),
                HasSubstr("deleted/images/d -> /Vireo_Deploy/images/d\n"));
    fs::remove(deployed("images/a"));
    listBy("c ", "a is not deployed any more");

    for (const char* const name : {"e", "f", "g"}) {
        write(deployed("images/") / name, name);
    }
    write(stored("images/e"), "e");
    write(stored("images/f"), "mine");
    phone.crash();
    phone.start();
    show("e, f and g deployed, own files e and f, restarted");
    EXPECT_THAT(listBy("c e f g ", "listed; g is new with this start"),
                HasSubstr("images/e -> /Vireo_Deploy/images/e\nimages/f = mine\n"
                          "images/g -> /Vireo_Deploy/images/g\n"));

    fs::create_symlink(deployed("images/c"), stored("deleted/images/c"));
    show("c in both areas");
    EXPECT_EQ(listBy("c e f g ", "listed"),
              "deleted/images/b -> /Vireo_Deploy/images/b\n"
              "deleted/images/d -> /Vireo_Deploy/images/d\n"
              "images/c -> /Vireo_Deploy/images/c\nimages/e -> /Vireo_Deploy/images/e\n"
              "images/f = mine\nimages/g -> /Vireo_Deploy/images/g\n");
}

TEST_F(UserFilesTest, AVisitorComesAndGoes) {
    write(deployed("images/a"), "a");
    write(deployed("ringtones/bell"), "ding");
    write(stored("images/own"), "own");
    write(stored("ldap/template"), "ldap");
    phone.start();
    EXPECT_EQ(phone.ctl({"user", "baseUser"}).out, "result = true\n");
    EXPECT_EQ(phone.ctl({"user", "migrateToVisitorUser"}).exitCode, 0);
    EXPECT_EQ(list("images"), "a own ");
    EXPECT_THAT(show("migrated"), AllOf(HasSubstr("visitor/images/own = own\n"),
                                        HasSubstr("visitor/ldap/template = ldap\n")));
    write(stored("visitor/images/private"), "private");
    EXPECT_EQ(phone.ctl({"user", "baseUser"}).exitCode, 0);
    EXPECT_THAT(show("back"), Not(AnyOf(HasSubstr("private"), HasSubstr("visitor/images/own"))));
    EXPECT_EQ(list("images"), "a own ");
    EXPECT_EQ(phone.ctl({"user", "visitorUser"}).exitCode, 0);
    EXPECT_EQ(list("ringer"), "bell ");
    EXPECT_EQ(phone.ctl({"user", "nobody"}).exitCode, 2);
    const Outcome visitors = phone.ctl({"files", "list", "images", "--user", "baseUser"});
    EXPECT_EQ(visitors.out,
              stored("images/a").string() + '\n' + stored("images/own").string() + '\n');
    EXPECT_THAT(phone.ctl({"space"}).out, HasSubstr("Phone storage (/data/vireo/): "));
    EXPECT_THAT(phone.ctl({"--json", "space"}).out, HasSubstr("\"totalBytes\":"));
}

TEST_F(UserFilesTest, ListsCarryEveryNameInBothProtocols) {
    const std::vector<std::string> names{" blank ",
                                         "<tag>",
                                         "a&b;",
                                         "line\nend",
                                         "quote\"'",
                                         "tab\t",
                                         "\xc3\xa4\xe2\x82\xac\xf0\x9f\x93\x9e"};
    std::list<std::string> paths;
    for (const std::string& name : names) {
        write(stored("logos") / name, "x");
        paths.push_back(stored("logos") / name);
    }
    phone.start();
    for (const auto protocol : {LocalMgmtClient::Protocol::eRpc, LocalMgmtClient::Protocol::eXml}) {
        const auto client = connect(protocol);
        std::list<std::string> files;
        EXPECT_EQ(client->getListOfFilesOfType("logo", files), CallStatus::eDone);
        EXPECT_EQ(files, paths);
        files.clear();
        EXPECT_EQ(client->getListOfFilesOfTypeAndUser("logo", LocalMgmtIfc::USER_BASE, files),
                  CallStatus::eDone);
        EXPECT_EQ(files, paths);
        EXPECT_EQ(client->getListOfFilesOfType("phd", files), CallStatus::eDone);
        EXPECT_TRUE(files.empty());
        bool result = true;
        EXPECT_EQ(client->deleteFile(LocalMgmtIfc::FILETYPE_LOGO, "missing", result),
                  CallStatus::eDone);
        EXPECT_FALSE(result);
    }

    // As they travel; the longer method answers under the shorter name.
    const auto client = connect(LocalMgmtClient::Protocol::eXml);
    Method request("getListOfFilesOfTypeAndUser", Method::eRequest);
    request.addStringParameter("FileType", Parameter::eIn, "logo");
    request.addIntParameter("userType", Parameter::eIn, LocalMgmtIfc::USER_BASE);
    Method reply;
    ASSERT_EQ(client->call(request, reply), CallStatus::eDone);
    EXPECT_EQ(reply.name(), "getListOfFilesOfType");
    ASSERT_EQ(reply.parameters().size(), 2U);
    EXPECT_EQ(reply.getStringParameter("Acknowledge", Parameter::eOut), "SUCCESS");
    EXPECT_THAT(reply.getXMLParameter("FileNames", Parameter::eOut),
                HasSubstr("<fileinfo directory=\"" + stored("logos").string() +
                          "\" name=\"&lt;tag&gt;\" /><fileinfo "));

    // A list of the request's is taken, and what is none is not answered.
    const auto rpc = connect(LocalMgmtClient::Protocol::eRpc);
    const std::map<std::string, bool> isList{
        {"0;", true}, {"1;3;old", true}, {"1;3;ol", false}, {"", false}};
    for (const auto& [list, isOne] : isList) {
        Method asked("getListOfFilesOfTypeAndUser", Method::eRequest);
        asked.addStringParameter("FileType", Parameter::eIn, "logo");
        asked.addStringParameter("FileNames", Parameter::eInOut, list);
        asked.addIntParameter("userType", Parameter::eIn, LocalMgmtIfc::USER_BASE);
        EXPECT_EQ(rpc->call(asked, reply), isOne ? CallStatus::eDone : CallStatus::eEmptyReply)
            << list;
    }

    // What XML cannot carry does not keep the others.
    write(stored("logos/\x01"), "x");
    std::list<std::string> files;
    EXPECT_EQ(client->getListOfFilesOfType("logo", files), CallStatus::eDone);
    EXPECT_EQ(files, paths);
    EXPECT_EQ(rpc->getListOfFilesOfType("logo", files), CallStatus::eDone);
    EXPECT_EQ(files.size(), paths.size() + 1);
}

/// Works on the areas until the phone dies.
void workUntilTheEnd(LocalMgmtClient& client, unsigned seed, std::atomic<int>& calls) {
    std::mt19937 random(seed);
    static constexpr const char* kUsers[] = {"baseUser", "visitorUser", "migrateToVisitorUser",
                                             "clearDataVisitorUser"};
    static constexpr LocalMgmtIfc::eFiletype kFiles[] = {LocalMgmtIfc::FILETYPE_PICTURE,
                                                         LocalMgmtIfc::FILETYPE_SCREENSAVER,
                                                         LocalMgmtIfc::FILETYPE_RINGER};
    bool result = false;
    std::list<std::string> files;
    for (CallStatus status = CallStatus::eDone; status == CallStatus::eDone; ++calls) {
        switch (random() % 4) {
            case 0:
                status = client.changeCurrentUser(kUsers[random() % 4], result);
                break;
            case 1:
                status = client.deleteFile(kFiles[random() % 3],
                                           "default-" + std::to_string(random() % 20), result);
                break;
            case 2:
                status = client.cleanupUserData("images", LocalMgmtIfc::USER_VISITOR, result);
                break;
            default:
                status = client.getListOfFilesOfType(kTypeNames[random() % 4], files);
                break;
        }
    }
}

TEST_F(UserFilesTest, AKilledPhoneKeepsTheRulesAndEveryFile) {
    std::mt19937 random(8);
    for (const char* const kind : kKinds) {
        for (int i = 0; i < 20; ++i) {
            write(deployed(kind) / ("default-" + std::to_string(i)), "default");
        }
        write(stored(kind) / "own", std::string(100'000, 'o'));
        write(stored(kind) / "default-3", "differs");
    }
    phone.start();
    const long rounds = effort("VIREO_AREA_CRASHES", 8);
    for (long round = 0; round < rounds && !HasFailure(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        const auto client = connect(LocalMgmtClient::Protocol::eRpc);
        std::atomic<int> calls{0};
        std::thread worker(
            [&, seed = static_cast<unsigned>(random())] { workUntilTheEnd(*client, seed, calls); });
        const int enough = 1 + static_cast<int>(random() % 40);
        while (calls < enough) {
            std::this_thread::yield();
        }
        phone.crash();
        worker.join();
        phone.start();
        const auto again = connect(LocalMgmtClient::Protocol::eRpc);
        std::list<std::string> files;
        for (const char* const type : kTypeNames) {
            again->getListOfFilesOfTypeAndUser(type, LocalMgmtIfc::USER_BASE, files);
            again->getListOfFilesOfTypeAndUser(type, LocalMgmtIfc::USER_VISITOR, files);
        }
        expectRules("");
        for (const char* const kind : kKinds) {
            EXPECT_EQ(contentsOf(stored(kind) / "own"), std::string(100'000, 'o'));
            write(stored(kind) / "default-7", "default");
        }
        for (const auto& entry : fs::recursive_directory_iterator(stored(""))) {
            EXPECT_NE(entry.path().filename().string().front(), '.') << entry.path();
        }
    }
}

}  // namespace
}  // namespace vireo::test
