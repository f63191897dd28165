#include "store/StoreRequest.h"

namespace vireo {
namespace {

/// Reads one request text from both ends towards its value.
class Scanner {
public:
    Scanner(std::string_view text, StoreRequest& request, StoreRequestFault& fault) noexcept
        : m_rest(text), m_request(request), m_fault(fault) {}

    bool scan(const StoreCatalogue& catalogue) noexcept {
        if (!takeHead(R"(<?xml version="1.0" encoding="utf-8"?><Schema name=")")) {
            return fail("the request does not begin with its schema");
        }
        m_fault.tableName = takeName();
        if (!takeHead(R"("><ReasonForMessage>)")) {
            return fail("the schema name is not followed by a reason");
        }
        const std::string_view reason = takeName();
        if (!takeHead("</ReasonForMessage>")) {
            return fail("the reason does not end");
        }
        m_request.table = catalogue.findTable(m_fault.tableName);
        if (m_request.table == nullptr) {
            return fail("unknown table", m_fault.tableName);
        }
        if (!takeTail("</Schema>")) {
            return fail("the schema does not end");
        }
        if (reason == "read_request") {
            m_request.reason = StoreRequest::Reason::eRead;
            return scanRead();
        }
        if (reason == "update_request") {
            m_request.reason = StoreRequest::Reason::eUpdate;
            return scanUpdate();
        }
        return fail("unknown reason", reason);
    }

private:
    bool scanRead() noexcept {
        if (!takeHead("<ResultCols>")) {
            return fail("a read without a result column");
        }
        const std::string_view column = takeName();
        if (!takeHead("</ResultCols>")) {
            return fail("the result column does not end");
        }
        if (!findColumn(column)) {
            return false;
        }
        if (!m_request.table->isIndexed()) {
            return m_rest.empty() || fail("more than a result column for a table without index");
        }
        const std::string_view index = m_request.table->indexColumn;
        if (!takeHead("<Entry>") || !takeHead("<", index, ">")) {
            return fail("no entry for the index", index);
        }
        if (!takeTail("</Entry>") || !takeTail("</", index, ">")) {
            return fail("the entry does not end behind the index", index);
        }
        m_request.key = m_rest;
        return true;
    }

    bool scanUpdate() noexcept {
        const std::string_view index = m_request.table->indexColumn;
        if (m_request.table->isIndexed()) {
            if (!takeHead("<Entry>") || !takeHead("<", index, ">")) {
                return fail("no entry for the index", index);
            }
            if (!takeTail("</Entry>")) {
                return fail("the entry does not end");
            }
        }
        // The closing tag is the one place where a value cannot feign another column.
        const std::string_view column = takeClosingTag();
        if (column.empty()) {
            return fail("an update without a column");
        }
        if (!findColumn(column)) {
            return false;
        }
        if (m_request.table->isIndexed() && !takeKey(index, column)) {
            return fail("the index is not followed by the column", column);
        }
        if (!m_request.table->isIndexed() && !takeHead("<", column, ">")) {
            return fail("the column does not begin", column);
        }
        m_request.value = m_rest;
        return true;
    }

    // Takes all up to the first "</index><column>", and that as well.
    bool takeKey(std::string_view index, std::string_view column) noexcept {
        const std::string_view all = m_rest;
        for (std::size_t at = all.find("</"); at != std::string_view::npos;
             at = all.find("</", at + 2)) {
            m_rest = all.substr(at);
            if (takeHead("</", index, ">") && takeHead("<", column, ">")) {
                m_request.key = all.substr(0, at);
                return true;
            }
        }
        return false;
    }

    // Takes "</name>" from the end and answers the name, empty when there is none.
    std::string_view takeClosingTag() noexcept {
        if (!takeTail(">")) {
            return {};
        }
        std::size_t start = m_rest.size();
        while (start > 0 && StoreCatalogue::isNameCharacter(m_rest[start - 1])) {
            --start;
        }
        const std::string_view name = m_rest.substr(start);
        m_rest.remove_suffix(name.size());
        return takeTail("</") ? name : std::string_view();
    }

    std::string_view takeName() noexcept {
        std::size_t end = 0;
        while (end < m_rest.size() && StoreCatalogue::isNameCharacter(m_rest[end])) {
            ++end;
        }
        const std::string_view name = m_rest.substr(0, end);
        m_rest.remove_prefix(end);
        return name;
    }

    bool takeHead(std::string_view head) noexcept {
        if (!m_rest.starts_with(head)) {
            return false;
        }
        m_rest.remove_prefix(head.size());
        return true;
    }

    bool takeHead(std::string_view before, std::string_view name, std::string_view after) noexcept {
        return takeHead(before) && takeHead(name) && takeHead(after);
    }

    bool takeTail(std::string_view tail) noexcept {
        if (!m_rest.ends_with(tail)) {
            return false;
        }
        m_rest.remove_suffix(tail.size());
        return true;
    }

    bool takeTail(std::string_view before, std::string_view name, std::string_view after) noexcept {
        return takeTail(after) && takeTail(name) && takeTail(before);
    }

    bool findColumn(std::string_view name) noexcept {
        m_request.column = m_request.table->findColumn(name);
        return m_request.column != nullptr || fail("unknown column", name);
    }

    bool fail(std::string_view what, std::string_view name = {}) noexcept {
        m_fault.what = what;
        m_fault.name = name;
        return false;
    }

    std::string_view m_rest;
    StoreRequest& m_request;
    StoreRequestFault& m_fault;
};

}  // namespace

bool StoreRequest::parse(std::string_view text, const StoreCatalogue& catalogue,
                         StoreRequest& request, StoreRequestFault& fault) noexcept {
    request = StoreRequest();
    fault = StoreRequestFault();
    return Scanner(text, request, fault).scan(catalogue);
}

}  // namespace vireo
