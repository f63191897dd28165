#include <filesystem>

#include "support/AddedOwner.h"
#include "support/ProcessState.h"
#include "support/RunningPhone.h"

namespace vireo::test {
namespace {

/// A phone whose vireod has the device probe in its process.
class DeviceServicesTest : public ::testing::Test {
protected:
    void start(const std::vector<std::string>& options = {}) {
        addOwner(m_phone, "DeviceProbeMgmtId", {"device-probe"});
        std::vector<std::string> all{"--service", std::string("probe=") + VIREO_DEVICE_PROBE,
                                     "--log-level", "4"};
        all.insert(all.end(), options.begin(), options.end());
        m_phone.start(all);
    }
    std::string report() const { return m_phone.ctl({"get", "device-probe"}).out; }
    /// The report once the timer has fired.
    std::string finalReport() const {
        std::string text;
        eventually([&] {
            text = report();
            return text.find("timer:0") == std::string::npos;
        });
        return text;
    }
    void write(const std::string& name, const std::string& content) const {
        writeFile(m_phone.root() + '/' + name, content);
    }

    RunningPhone m_phone{RunningPhone::Prepared{}};
};

TEST_F(DeviceServicesTest, AServiceFindsFilesServicesAndTimers) {
    start();
    EXPECT_EQ(finalReport(), "device-probe = desk-1 " + m_phone.root() +
                                 "/data/vireo/probe/file certificates:0 media:2 mobility:1 "
                                 "timer:1\n");
    EXPECT_TRUE(std::filesystem::is_directory(m_phone.root() + "/data/vireo/probe"));
    EXPECT_FALSE(std::filesystem::exists(m_phone.root() + "/flash"));

    write("data/vireo/probe/file", std::string("MThd\0\0\0\x06\0\0\0\x01\0\x60MTrk\0\0\0\x04"
                                               "\0\xff\x2f\0",
                                               26));
    write("certificates/authorities/a.pem", "-----BEGIN CERTIFICATE-----\n");
    EXPECT_EQ(report(), "device-probe = desk-1 " + m_phone.root() +
                            "/data/vireo/probe/file certificates:1 media:0 mobility:1 timer:1\n");
    m_phone.stop();
    EXPECT_NE(m_phone.log().find("the pictures of the phone book are to be read again"),
              std::string::npos);
}

TEST_F(DeviceServicesTest, SettingsSayWhereThingsLie) {
    start({"--hardware-variant", "probe_7", "--storage-directory", "files",
           "--certificate-directory", "etc/certificates"});
    write("etc/certificates/authorities/a.pem", "-----BEGIN CERTIFICATE-----\n");
    EXPECT_EQ(finalReport(), "device-probe = probe_7 " + m_phone.root() +
                                 "/files/probe/file certificates:1 media:2 mobility:1 timer:1\n");
}

}  // namespace
}  // namespace vireo::test
