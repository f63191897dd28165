#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "AnswerPrinter.h"
#include "DownloadLine.h"
#include "ExitCode.h"
#include "LocalMgmtClient.h"

namespace vireo {

/// The part of the command line for the commands that go on until they are stopped.
class ServingLine {
public:
    /// Connects and runs to the end. `out` is what the printer writes to.
    using Command =
        std::function<ExitCode(const LocalMgmtClient::Options& connection, AnswerPrinter& printer,
                               const std::ostream& out, std::ostream& errors)>;

    /// Declares the commands; this object stays where it is until the line is parsed.
    void declare(CLI::App& app);

    /// Whether the line names one of them.
    bool isChosen() const { return m_bind != nullptr; }
    /// The channel name where none is given. A name is who a peer is for the service, so one that
    /// is registered for good is not shared with commands that come and go.
    const std::string& channelName() const { return m_channelName; }
    /// None, with `error`, when the arguments are wrong.
    std::optional<Command> bind(std::string& error) const { return (this->*m_bind)(error); }

private:
    using Binder = std::optional<Command> (ServingLine::*)(std::string& error) const;

    void declareWatch(CLI::App& app);
    void declareAgent(CLI::App& app);
    std::optional<Command> bindWatch(std::string& error) const;
    std::optional<Command> bindAgent(std::string& error) const;
    std::optional<Command> bindDownload(std::string& error) const;

    Binder m_bind = nullptr;
    std::string m_channelName;
    bool m_bulk = false;
    // of "watch"
    std::vector<std::string> m_tags;
    bool m_all = false;
    unsigned m_count = 0;  // 0: no end
    double m_seconds = 0;  // 0: no end
    // of "agent"
    std::string m_managementId;
    std::string m_valuesFile;
    std::vector<std::string> m_refusals;
    int m_delay = 0;
    bool m_hang = false;
    DownloadLine m_download;
};

}  // namespace vireo
