#include "TrapLine.h"

#include <charconv>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string_view>

namespace vireo {
namespace {

struct Destination {
    const char* name;
    int number;
};

constexpr Destination kDestinations[] = {{"manager", LocalMgmtIfc::TRAP_DEST_SNMP_MANAGER},
                                         {"qdc", LocalMgmtIfc::TRAP_DEST_QDC_COLLECTION_UNIT},
                                         {"diagnostic", LocalMgmtIfc::TRAP_DEST_DIAGNOSTIC}};

std::optional<int> parseNumber(std::string_view text) {
    int number = 0;
    const char* const end = text.data() + text.size();
    const auto [next, failure] = std::from_chars(text.data(), end, number);
    return failure == std::errc() && next == end ? std::optional(number) : std::nullopt;
}

/// All of it but a line end at its end.
std::optional<std::string> readText(const std::string& path, std::string& error) {
    std::ifstream file;
    const bool isFile = !path.empty() && path != "-";
    if (isFile) {
        file.open(path, std::ios::binary);
    }
    std::istream& in = isFile ? static_cast<std::istream&>(file) : std::cin;
    if (!in) {
        error = "cannot read '" + path + "'";
        return std::nullopt;
    }
    std::string text{std::istreambuf_iterator<char>(in), {}};
    if (text.ends_with('\n')) {
        text.pop_back();
    }
    return text;
}

}  // namespace

void TrapLine::declare(CLI::App& app, std::function<void()> chosen) {
    CLI::App& command = *app.add_subcommand("trap", "Send a trap to one of its receivers");
    command.add_option("KIND", m_kind, "generic or specific")
        ->required()
        ->check(CLI::IsMember({"generic", "specific"}))
        ->type_name("");
    command.add_option("DEST", m_dest, "The receiver: manager (0), qdc (1) or diagnostic (2)")
        ->required()
        ->type_name("");
    command
        .add_option("N|FILE", m_rest,
                    "generic: the number, 0 to 5; specific: a file with the text form of the trap, "
                    "standard input without one")
        ->type_name("");
    command.callback(std::move(chosen));
}

std::optional<int> TrapLine::destination(std::string& error) const {
    for (const Destination& each : kDestinations) {
        if (m_dest == each.name) {
            return each.number;
        }
    }
    const std::optional<int> number = parseNumber(m_dest);
    if (!number) {
        error = "'" + m_dest + "' is no receiver: manager, qdc, diagnostic or a number";
    }
    return number;
}

std::optional<TrapLine::Command> TrapLine::bind(std::string& error) const {
    const std::optional<int> dest = destination(error);
    if (!dest) {
        return std::nullopt;
    }
    if (m_kind == "specific") {
        const std::optional<std::string> text = readText(m_rest, error);
        return text ? std::optional<Command>([dest = *dest, text = *text](Commands& commands) {
            return commands.raiseSpecificTrap(dest, text);
        })
                    : std::nullopt;
    }
    const std::optional<int> trap = parseNumber(m_rest);
    if (!trap) {
        error = "a generic trap has a number, 0 to 5";
        return std::nullopt;
    }
    return [dest = *dest, trap = *trap](Commands& commands) {
        return commands.raiseGenericTrap(dest, trap);
    };
}

}  // namespace vireo
