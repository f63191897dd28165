#include "DownloadLine.h"

#include <unistd.h>

#include "FileTypes.h"
#include "terminal/PasswordInput.h"

namespace vireo {

void DownloadLine::declare(CLI::App& app, const std::function<void()>& onChosen) {
    CLI::App& command = *app.add_subcommand(
        "download",
        "Fetch a file from its server and follow it to its end; Ctrl-C leaves it going on");
    command.add_option("TYPE", m_type, "The file type")
        ->required()
        ->check(CLI::IsMember(FileTypes::names()))
        ->type_name("");
    CLI::Option* const file =
        command.add_option("FILE", m_source.fileName, "With --from: which file");
    CLI::Option* const from =
        command.add_option("--from", m_from, "Not by the phone's settings, but by this protocol")
            ->check(CLI::IsMember({"ftp", "https"}));
    CLI::Option* const server =
        command.add_option("--server", m_source.server, "Its name or address; or https://...")
            ->type_name("S");
    CLI::Option* const user = command.add_option("--user", m_source.userName,
                                                 "Who to be there; the password is asked for");
    user->type_name("U")->needs(from);
    file->type_name("")->needs(from);
    server->needs(from);
    from->needs(server)->needs(file);
    command.add_option("--port", m_port, "Another than the usual one")
        ->check(CLI::Range(1, 65535))
        ->type_name("P")
        ->needs(from);
    command.add_flag("--password-stdin", m_readsPassword, "Read the password from standard input")
        ->needs(user);
    command.add_option("--path", m_source.sourcePath, "The directory there")
        ->type_name("DIR")
        ->needs(from);
    command.add_flag("--override-busy", m_overrideBusy, "Fetch software during a call, too")
        ->needs(from);
    command.add_flag("--no-wait", m_noWait, "Only start it");
    command.callback(onChosen);
}

Download::Options DownloadLine::options() const {
    Download::Options options;
    options.type = m_type;
    options.overrideBusy = m_overrideBusy;
    options.wait = !m_noWait;
    if (!m_from.empty()) {
        options.source = m_source;
        options.source->port = m_port > 0 ? std::to_string(m_port) : std::string();
        options.source->protocol =
            m_from == "https" ? LocalMgmtIfc::DOWNLOAD_HTTPS : LocalMgmtIfc::DOWNLOAD_FTP;
    }
    return options;
}

bool DownloadLine::takePassword(Download::Options& options, const StopSignal& stop,
                                std::string& error) const {
    if (m_source.userName.empty()) {
        return true;
    }
    const auto password = m_readsPassword ? PasswordInput::readLine(STDIN_FILENO, stop, error)
                                          : PasswordInput::ask("Password of " + m_source.userName +
                                                                   " at " + m_source.server + ": ",
                                                               stop, error);
    if (password && options.source) {
        options.source->password = *password;
    }
    return password.has_value();
}

}  // namespace vireo
