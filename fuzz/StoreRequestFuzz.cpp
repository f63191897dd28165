#include <string>

#include "Fuzz.h"
#include "store/StoreRequest.h"

namespace vireo::fuzz {
namespace {

std::string element(const std::string& name, std::string_view text) {
    return "<" + name + ">" + std::string(text) + "</" + name + ">";
}

/// The only text that means this request: nothing in a text goes unnoticed.
std::string textOf(const StoreRequest& request) {
    const bool isRead = request.reason == StoreRequest::Reason::eRead;
    const StoreTable& table = *request.table;
    std::string entry = table.isIndexed() ? element(table.indexColumn, request.key) : "";
    std::string content = isRead ? "" : element(request.column->name, request.value);
    if (table.isIndexed()) {
        content = element("Entry", entry + content);
    }
    return R"(<?xml version="1.0" encoding="utf-8"?><Schema name=")" + table.name + "\">" +
           element("ReasonForMessage", isRead ? "read_request" : "update_request") +
           (isRead ? element("ResultCols", request.column->name) : "") + content + "</Schema>";
}

bool isPartOf(std::string_view part, std::string_view whole) {
    return part.empty() || (part.data() >= whole.data() &&
                            part.data() + part.size() <= whole.data() + whole.size());
}

}  // namespace

void run(std::string_view input) {
    static std::string error;
    static const auto catalogue = StoreCatalogue::parse(
        R"(<store><table name="A"><column name="a"/><column name="b"/></table>
           <table name="K" index="i"><column name="c"/><column name="ci"/></table></store>)",
        error);
    StoreRequest request;
    StoreRequestFault fault;
    if (StoreRequest::parse(input, *catalogue, request, fault)) {
        require(textOf(request) == input, "a request is taken apart without a rest");
    } else {
        require(!fault.what.empty(), "a refusal has a reason");
        require(isPartOf(fault.name, input) || fault.name == request.table->indexColumn,
                "what a refusal names is in the request, or the index");
        require(isPartOf(fault.tableName, input), "what a refusal names is in the request");
    }
}

}  // namespace vireo::fuzz
