#include "data/PlainXml.h"

#include <algorithm>

namespace vireo {
namespace {

bool isBlank(char c) {
    return c == ' ' || c == '\n' || c == '\t' || c == '\r';
}

bool isNameStart(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

bool isNamePart(char c) {
    return isNameStart(c) || (c >= '0' && c <= '9') || c == '-' || c == '.';
}

}  // namespace

bool PlainXml::moveBehind(std::string_view mark) {
    const std::string_view rest(m_next, left());
    const std::size_t found = rest.find(mark);
    if (found == std::string_view::npos) {
        return false;
    }
    m_next += found + mark.size();
    return true;
}

void PlainXml::skipBlanks() {
    while (m_next != m_end && isBlank(*m_next)) {
        ++m_next;
    }
}

bool PlainXml::skipLayout() {
    skipBlanks();
    while (take("<!--")) {
        if (!moveBehind("-->")) {
            return false;
        }
        skipBlanks();
    }
    return true;
}

bool PlainXml::moveToTag() {
    const void* tag = left() == 0 ? nullptr : std::memchr(m_next, '<', left());
    if (tag == nullptr) {
        return false;
    }
    m_next = static_cast<const char*>(tag);
    return true;
}

std::string_view PlainXml::takeName() {
    const char* const begin = m_next;
    if (m_next != m_end && isNameStart(*m_next)) {
        m_next = std::find_if_not(m_next, m_end, [](char c) { return isNamePart(c); });
    }
    return since(begin);
}

bool PlainXml::takeAttribute(std::string_view& name, std::string_view& value) {
    const char* const before = m_next;
    skipBlanks();
    if (m_next == before) {
        return false;
    }
    name = takeName();
    if (name.empty() || !take("=") || isAtEnd() || (*m_next != '"' && *m_next != '\'')) {
        return false;
    }
    const char quote = *m_next++;
    const char* const begin = m_next;
    m_next =
        std::find_if(m_next, m_end, [quote](char c) { return c == quote || c == '<' || c == '&'; });
    value = since(begin);
    return take(std::string_view(&quote, 1));
}

bool PlainXml::takeStartTag(std::string_view& name, bool& isEmpty) {
    if (!take("<")) {
        return false;
    }
    name = takeName();
    isEmpty = take("/>");
    return !name.empty() && (isEmpty || take(">"));
}

bool PlainXml::takeEndTag(std::string_view name) {
    return take("</") && take(name) && take(">");
}

bool PlainXml::takeTagEnd() {
    const char* const begin = m_next;
    skipBlanks();
    if (!take(">")) {
        m_next = begin;
    }
    return m_next != begin;
}

bool PlainXml::takeRow(PlainRow& row) {
    const char* const begin = m_next;
    row.isAlike = row.isPattern && takeAlike(row);
    if (!row.isAlike) {
        m_next = begin;
        if (!skipLayout() || !takeOther(row)) {
            return false;
        }
    }
    row.written = since(begin);
    return true;
}

/// Everything but the texts has to be byte for byte that of the row before, so it is as plain and
/// as well-formed: no text reaches beyond its end tag, which begins with the next '<'.
bool PlainXml::takeAlike(PlainRow& row) {
    const char* was = row.written.data();
    const auto takeSameUpTo = [this, &was](const char* end) {
        return take(std::string_view(was, static_cast<std::size_t>(end - was)));
    };
    const auto takeText = [this, &was, &takeSameUpTo](std::string_view& text) {
        if (!takeSameUpTo(text.data())) {
            return false;
        }
        was = text.data() + text.size();
        const char* const start = m_next;
        const bool isFound = moveToTag();
        text = since(start);
        return isFound;
    };
    const char* const end = row.written.data() + row.written.size();
    bool isAlike = row.count > 0 || takeText(row.text);
    for (std::size_t i = 0; isAlike && i < row.count; ++i) {
        isAlike = takeText(row.cells[i].text);
    }
    return isAlike && takeSameUpTo(end);
}

bool PlainXml::takeOther(PlainRow& row) {
    row.count = 0;
    row.text = {};
    bool isEmpty = false;
    if (!takeStartTag(row.name, isEmpty)) {
        return false;
    }
    row.isPattern = !isEmpty;
    const char* const begin = m_next;
    if (!isEmpty && !moveToTag()) {
        return false;
    }
    const std::string_view text = since(begin);
    if (isEmpty || takeEndTag(row.name)) {
        row.text = text;
        return true;
    }
    m_next = begin;
    do {
        if (!skipLayout() || !takeCell(row) || !skipLayout()) {
            return false;
        }
    } while (!takeEndTag(row.name));
    return true;
}

bool PlainXml::takeCell(PlainRow& row) {
    std::string_view name;
    bool isEmpty = false;
    if (row.count == PlainRow::kMostCells || !takeStartTag(name, isEmpty)) {
        return false;
    }
    for (std::size_t i = 0; i < row.count; ++i) {
        if (row.cells[i].name == name) {
            return false;
        }
    }
    row.isPattern = row.isPattern && !isEmpty;
    const char* const begin = m_next;
    if (!isEmpty && !moveToTag()) {
        return false;
    }
    row.cells[row.count++] = {name, since(begin)};
    return isEmpty || takeEndTag(name);
}

}  // namespace vireo
