#include "AgentValues.h"

#include <utility>

namespace vireo {
namespace {

std::map<std::string, std::string> byTag(std::vector<Assignment> assignments) {
    std::map<std::string, std::string> values;
    for (Assignment& assignment : assignments) {
        values.emplace(std::move(assignment.tag), std::move(assignment.value));
    }
    return values;
}

}  // namespace

AgentValues::AgentValues(std::vector<Assignment> initial, SchemaFinder findSchema)
    : m_initial(byTag(std::move(initial))), m_findSchema(std::move(findSchema)) {}

std::optional<std::vector<Assignment>> AgentValues::parse(std::istream& lines, std::string& error) {
    std::vector<std::string> arguments;
    std::string line;
    for (int number = 1; std::getline(lines, line); ++number) {
        if (line.empty() || line.front() == '#') {
            continue;
        }
        if (!Assignment::parse(line, error)) {
            error = "line " + std::to_string(number) + ": " + error;
            return std::nullopt;
        }
        arguments.push_back(line);
    }
    return Assignment::parseAll(arguments, error);
}

void AgentValues::fill(ManageableData& record) {
    const std::vector<std::string> tags = record.rootIds();
    for (const std::string& tag : tags) {
        if (!putKept(record, tag)) {
            begin(record, tag);
        }
    }
}

bool AgentValues::keep(const ManageableData& record, const std::string& tag) {
    DxlDocumentPointer document = record.getDocument(tag);
    if (!document) {
        return false;
    }
    auto schema = record.getSchema(document->schemaName());
    m_kept.insert_or_assign(tag, Kept{std::move(document), std::move(schema)});
    return true;
}

bool AgentValues::change(const Assignment& assignment, ManageableData& record) {
    ManageableData changed;
    if (!putKept(changed, assignment.tag)) {
        begin(changed, assignment.tag);
    }
    if (!changed.populate(assignment.tag, assignment.value)) {
        return false;
    }
    keep(changed, assignment.tag);
    record.overlay(changed);
    return true;
}

void AgentValues::reset() {
    m_kept.clear();
}

// The document of an item that nobody has written.
bool AgentValues::begin(ManageableData& record, const std::string& tag) {
    const std::string schemaName = m_findSchema(tag, record);
    const bool isMade = !schemaName.empty() && record.makeDocument(schemaName, tag);
    const auto initial = m_initial.find(tag);
    if (initial != m_initial.end()) {
        return record.populate(tag, initial->second);
    }
    return isMade || record.populate(tag, "");
}

bool AgentValues::putKept(ManageableData& record, const std::string& tag) const {
    const auto found = m_kept.find(tag);
    if (found == m_kept.end()) {
        return false;
    }
    if (found->second.schema) {
        record.putSchema(found->second.schema);
    }
    record.putDocument(found->second.document);
    return true;
}

}  // namespace vireo
