#include "FilesLine.h"

#include "FileTypes.h"
#include "UserTypes.h"

namespace vireo {
namespace {

void addType(CLI::App& command, std::string& type) {
    command.add_option("TYPE", type, "The file type")
        ->required()
        ->check(CLI::IsMember(FileTypes::names()))
        ->type_name("");
}

}  // namespace

void FilesLine::declare(CLI::App& app) {
    CLI::App* const files = app.add_subcommand("files", "List or delete files of users");
    files->require_subcommand(1);
    declareList(*files);
    declareDelete(*files);
    declareUser(app);
    app.add_subcommand("space", "Print how much room there is for files")->callback([this] {
        m_command = [](Commands& commands) { return commands.showSpace(); };
    });
}

void FilesLine::declareList(CLI::App& files) {
    CLI::App* const list = files.add_subcommand("list", "Print the files of a type");
    addType(*list, m_type);
    list->add_option("--user", m_user, "Whose they are [the current user]")
        ->check(CLI::IsMember(UserTypes::names()))
        ->type_name("USER");
    list->callback([this] {
        m_command = [type = m_type, user = m_user](Commands& commands) {
            return commands.listFiles(type, user);
        };
    });
}

void FilesLine::declareDelete(CLI::App& files) {
    CLI::App* const remove = files.add_subcommand("delete", "Delete a file of the current user");
    addType(*remove, m_type);
    remove->add_option("NAME", m_name, "The file, without its directory")
        ->required()
        ->type_name("");
    remove->callback([this] {
        m_command = [type = m_type, name = m_name](Commands& commands) {
            return commands.deleteFile(type, name);
        };
    });
}

void FilesLine::declareUser(CLI::App& app) {
    CLI::App* const user = app.add_subcommand(
        "user", "Make another user the current one; may clear a visitor's files");
    user->add_option("USER", m_user, "The user")
        ->required()
        ->check(CLI::IsMember(UserTypes::names()))
        ->type_name("");
    user->callback([this] {
        m_command = [name = m_user](Commands& commands) { return commands.changeUser(name); };
    });
}

}  // namespace vireo
