#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <optional>
#include <string>

#include "Download.h"

namespace vireo {

/// The part of the command line for the command that has a file fetched.
class DownloadLine {
public:
    /// Declares it; this object stays where it is until the line is parsed. `onChosen` is called
    /// when the line names the command.
    void declare(CLI::App& app, const std::function<void()>& onChosen);

    /// Without the password.
    Download::Options options() const;
    /// Takes the password where there is a user, from a person or from standard input. False when
    /// there is none; `error` then says why.
    bool takePassword(Download::Options& options, const StopSignal& stop, std::string& error) const;

private:
    std::string m_type;
    std::string m_from;  // empty: as the phone's items say
    LocalMgmtClient::DownloadSource m_source;
    int m_port = 0;  // 0: the usual one
    bool m_readsPassword = false;
    bool m_overrideBusy = false;
    bool m_noWait = false;
};

}  // namespace vireo
