#pragma once

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "LocalMgmtClient.h"
#include "data/ManageableData.h"
#include "support/ChildProcess.h"
#include "support/Files.h"
#include "support/TemporaryDirectory.h"

namespace vireo::test {

/// A vireod of its own on the sample phone, in a directory that goes with the test.
class RunningPhone {
public:
    explicit RunningPhone(std::vector<std::string> wrapper = {}) : m_wrapper(std::move(wrapper)) {
        start();
    }

    /// One that does not run yet, with a configuration of its own.
    struct Prepared {};
    explicit RunningPhone(Prepared /*unused*/) : m_configDirectory(file("config")) {
        std::filesystem::copy(VIREO_CONFIG, m_configDirectory,
                              std::filesystem::copy_options::recursive);
    }

    /// What the next start is run by.
    void wrap(std::vector<std::string> wrapper) { m_wrapper = std::move(wrapper); }

    void start(const std::vector<std::string>& options = {}, std::string logFile = {}) {
        std::vector<std::string> command = m_wrapper;
        command.insert(command.end(),
                       {VIREOD, "--config", m_configDirectory, "--root", root(), "--socket",
                        socket(), "--log-file", logFile.empty() ? this->logFile() : logFile});
        command.insert(command.end(), options.begin(), options.end());
        process = std::make_unique<ChildProcess>(command);
        std::string line;
        if (!process->readLine(line) || line.find("vireod: ready on ") != 0) {
            ADD_FAILURE() << "vireod did not start: " << line << process->finish().err;
        }
    }
    /// Ends it as its administrator does.
    void stop() {
        process->kill(SIGTERM);
        EXPECT_EQ(process->finish().exitCode, 0);
    }
    /// Kills it as a crash would, and waits until it is gone.
    void crash() {
        process->kill(SIGKILL);
        process->finish();
    }

    std::unique_ptr<LocalMgmtClient> connect() const {
        std::string error;
        LocalMgmtClient::Options options;
        options.socketPath = socket();
        auto client = LocalMgmtClient::connect(options, error);
        EXPECT_TRUE(client) << error;
        return client;
    }

    /// What runs vireoctl against this phone.
    std::vector<std::string> ctlCommand(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), {VIREOCTL, "--socket", socket()});
        return arguments;
    }
    Outcome ctl(const std::vector<std::string>& arguments) const {
        return ChildProcess::run(ctlCommand(arguments));
    }

    /// Writes items, each given as "tag=value".
    void set(std::vector<std::string> items) const {
        items.insert(items.begin(), "set");
        const Outcome written = ctl(items);
        EXPECT_EQ(written.exitCode, 0) << written.err;
    }

    /// A file of its own configuration.
    std::string config(const std::string& name) const { return m_configDirectory + '/' + name; }
    std::string root() const { return m_directory.file("root"); }
    std::string socket() const { return m_directory.file("run/vireo.sock"); }
    std::string logFile() const { return m_directory.file("log"); }
    std::string log() const { return readFile(logFile()); }
    std::string storeFile() const { return root() + "/data/das/store.db"; }
    std::string file(const std::string& name) const { return m_directory.file(name); }

    std::unique_ptr<ChildProcess> process;

private:
    std::vector<std::string> m_wrapper;
    TemporaryDirectory m_directory;
    std::string m_configDirectory = VIREO_CONFIG;
};

}  // namespace vireo::test
