#include "store/StoreAnswer.h"

#include <cstddef>
#include <initializer_list>

#include "data/XmlText.h"

namespace vireo {
namespace {

constexpr std::string_view kHead = R"(<?xml version="1.0" encoding="utf-8"?><Schema name=")";
constexpr std::string_view kReasonStart = "\"><ReasonForMessage>";
constexpr std::string_view kReasonEnd = "</ReasonForMessage>";
constexpr std::string_view kTail = "</Schema>";

// Appends without the temporary texts that operator+ makes.
void appendAll(std::string& out, std::initializer_list<std::string_view> parts) {
    for (const std::string_view part : parts) {
        out.append(part);
    }
}

// One allocation in most cases: `more` is what follows the reason.
std::string begin(std::string_view table, std::string_view reason, std::size_t more) {
    std::string out;
    out.reserve(kHead.size() + table.size() + kReasonStart.size() + reason.size() +
                kReasonEnd.size() + more + kTail.size());
    appendAll(out, {kHead, table, kReasonStart, reason, kReasonEnd});
    return out;
}

void appendElement(std::string& out, std::string_view name, std::string_view text) {
    appendAll(out, {"<", name, ">"});
    XmlText::appendEscaped(out, text);
    appendAll(out, {"</", name, ">"});
}

}  // namespace

std::string StoreAnswer::read(std::string_view table, std::string_view column,
                              const std::optional<std::string>& value) {
    const std::size_t elementSize = value ? value->size() + 2 * column.size() + 5 : 0;
    std::string out = begin(table, "read_response", elementSize);
    if (value) {
        appendElement(out, column, *value);
    }
    out += kTail;
    return out;
}

std::string StoreAnswer::updated(std::string_view table) {
    std::string out = begin(table, "update_response", 0);
    out += kTail;
    return out;
}

std::string StoreAnswer::error(std::string_view table, std::string_view what) {
    std::string out = begin(table, "error_response", what.size() + 15);
    // What SQLite says may quote anything that is in the file.
    appendElement(out, "Error", XmlText::findUncarriable(what) ? "the store failed" : what);
    out += kTail;
    return out;
}

}  // namespace vireo
