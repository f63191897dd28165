#include "ServingLine.h"

#include <unistd.h>

#include <chrono>
#include <fstream>

#include "OwnerAgent.h"
#include "Watch.h"
#include "terminal/StopSignal.h"

namespace vireo {
namespace {

using std::chrono::milliseconds;

constexpr int kLongestDelay = 86400000;
constexpr double kLongestSpan = 1e8;

// None, with `error`, when the file cannot be read or holds something else.
std::optional<std::vector<Assignment>> readValues(const std::string& path, std::string& error) {
    if (path.empty()) {
        return std::vector<Assignment>();
    }
    std::ifstream file(path);
    if (!file) {
        error = "cannot read '" + path + "'";
        return std::nullopt;
    }
    auto values = AgentValues::parse(file, error);
    if (!values) {
        error = path + ": " + error;
    }
    return values;
}

}  // namespace

void ServingLine::declare(CLI::App& app) {
    declareWatch(app);
    declareAgent(app);
    m_download.declare(app, [this] {
        m_bind = &ServingLine::bindDownload;
        m_channelName = "download-*";
    });
}

void ServingLine::declareWatch(CLI::App& app) {
    CLI::App& command = *app.add_subcommand("watch", "Print changes of items as they happen");
    CLI::Option* tags = command.add_option("TAG", m_tags, "The items or collections to observe");
    tags->type_name("");
    command.add_flag("--all", m_all, "Observe all items")->excludes(tags);
    command.add_flag("--bulk", m_bulk, "One record for the changes of one request");
    command.add_option("--count", m_count, "End after so many records")
        ->check(CLI::PositiveNumber)
        ->type_name("N");
    command.add_option("--seconds", m_seconds, "End after so long")
        ->check(CLI::Range(0.001, kLongestSpan))
        ->type_name("S");
    command.callback([this] {
        m_bind = &ServingLine::bindWatch;
        m_channelName = "watch-*";
    });
}

void ServingLine::declareAgent(CLI::App& app) {
    CLI::App& command = *app.add_subcommand(
        "agent",
        "Own the items of a management id and print what is asked; a line TAG=VALUE on standard "
        "input announces a change");
    command.add_option("ID", m_managementId, "The management id")->required()->type_name("");
    command.add_option("--values", m_valuesFile, "Lines TAG=VALUE to begin with; # is a comment")
        ->type_name("FILE");
    command.add_flag("--bulk", m_bulk, "Take all items of one request in one record");
    command.add_option("--refuse", m_refusals, "Refuse to write an item, for this reason")
        ->allow_extra_args(false)
        ->type_name("TAG=REASON");
    command.add_option("--delay", m_delay, "Wait before each answer")
        ->check(CLI::Range(0, kLongestDelay))
        ->type_name("MS");
    command.add_flag("--hang", m_hang, "Never answer");
    command.callback([this] {
        m_bind = &ServingLine::bindAgent;
        m_channelName = "agent-*";
    });
}

std::optional<ServingLine::Command> ServingLine::bindWatch(std::string& error) const {
    Watch::Options options;
    options.tags = m_all ? std::vector<std::string>{"all-data"} : m_tags;
    if (options.tags.empty()) {
        error = "what to observe is missing: TAG or --all";
        return std::nullopt;
    }
    options.bulk = m_bulk;
    if (m_count > 0) {
        options.count = m_count;
    }
    if (m_seconds > 0) {
        options.span = std::chrono::ceil<milliseconds>(std::chrono::duration<double>(m_seconds));
    }
    return [options](const LocalMgmtClient::Options& connection, AnswerPrinter& printer,
                     const std::ostream& out, std::ostream& errors) {
        const StopSignal stop;
        return Watch(options, printer, out, errors).run(connection, stop);
    };
}

std::optional<ServingLine::Command> ServingLine::bindAgent(std::string& error) const {
    OwnerAgent::Options options;
    auto initial = readValues(m_valuesFile, error);
    auto refusals = Assignment::parseAll(m_refusals, error);
    if (!initial || !refusals) {
        return std::nullopt;
    }
    options.managementId = m_managementId;
    options.initial = std::move(*initial);
    options.refusals = std::move(*refusals);
    options.bulk = m_bulk;
    options.delay = milliseconds(m_delay);
    options.hang = m_hang;
    return [options](const LocalMgmtClient::Options& connection, AnswerPrinter& printer,
                     const std::ostream& out, std::ostream& errors) {
        const StopSignal stop;
        return OwnerAgent(options, printer, out, errors, stop).run(connection, STDIN_FILENO);
    };
}

std::optional<ServingLine::Command> ServingLine::bindDownload(std::string& /*error*/) const {
    return [this](const LocalMgmtClient::Options& connection, AnswerPrinter& printer,
                  const std::ostream& /*out*/, std::ostream& errors) {
        const StopSignal stop;
        Download::Options options = m_download.options();
        std::string error;
        if (!m_download.takePassword(options, stop, error)) {
            errors << "vireoctl: " << error << '\n';
            return ExitCode::eRefused;
        }
        return Download(options, printer, errors).run(connection, stop);
    };
}

}  // namespace vireo
