#include "data/PlainRecord.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>

#include "data/ManageableData.h"
#include "data/XmlText.h"

namespace vireo {
namespace {

/// Whether the text stands for itself between double quotes. Other characters than these are rare
/// in names.
bool isPlainAttribute(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte >= 0x20 && byte < 0x7F && c != '&' && c != '<' && c != '>';
    });
}

/// Takes a text apart from its front. Each function answers false when the front is something else.
class Scanner {
public:
    explicit Scanner(std::string_view text) : m_rest(text) {}

    bool isAt(std::string_view end) const { return m_rest == end; }

    bool take(std::string_view mark) {
        if (!m_rest.starts_with(mark)) {
            return false;
        }
        m_rest.remove_prefix(mark.size());
        return true;
    }

    /// A plain text up to the tag `end`, and that tag.
    bool takeText(std::string_view end, std::string_view& text) {
        return takeUpTo('<', text) && take(end) && XmlText::isPlain(text);
    }

    /// A plain text in quotes, of which the first is taken already, and what follows it.
    bool takeAttribute(std::string_view end, std::string_view& text) {
        return takeUpTo('"', text) && take(end) && !text.empty() && isPlainAttribute(text);
    }

private:
    bool takeUpTo(char end, std::string_view& text) {
        const std::size_t length = m_rest.find(end);
        if (length == std::string_view::npos) {
            return false;
        }
        text = m_rest.substr(0, length);
        m_rest.remove_prefix(length);
        return true;
    }

    std::string_view m_rest;
};

std::shared_ptr<const DxlNode> leaf(std::string_view name, std::string_view text) {
    return std::make_shared<const DxlNode>(std::string(name), DxlNode::Kind::eLeaf,
                                           std::string(text));
}

bool readRootId(Scanner& scanner, ManageableData& record, bool isSingle) {
    std::string_view text;
    if (!scanner.takeText("</rootId>", text)) {
        return false;
    }
    const std::string rootId(text);
    if (isSingle && record.rootIds().empty()) {
        record.setRootId(rootId, nullptr);
    } else {
        record.addRootId(rootId, nullptr);  // a second one makes it a record of several
    }
    return true;
}

bool readSchema(Scanner& scanner, ManageableData& record) {
    std::string_view name;
    std::string_view text;
    if (!scanner.takeAttribute("\" type=\"string\">", name) || !XmlText::isName(name) ||
        !scanner.takeText("</schema>", text)) {
        return false;
    }
    record.putSchema(std::make_shared<const DxlSchema>(leaf(name, text)));
    return true;
}

bool readDocument(Scanner& scanner, ManageableData& record) {
    std::string_view name;
    std::string_view schema;
    std::string_view text;
    if (!scanner.takeAttribute("\" schema=\"", name) || !scanner.takeAttribute("\">", schema) ||
        !XmlText::isName(schema) || !scanner.takeText("</document>", text)) {
        return false;
    }
    record.putDocument(std::make_shared<const DxlDocument>(std::string(name), leaf(schema, text)));
    return true;
}

}  // namespace

bool PlainRecord::read(std::string_view text, ManageableData& record) {
    Scanner scanner(text);
    const bool isSingle = scanner.take("<record single=\"1\">");
    if (!isSingle && !scanner.take("<record>")) {
        return false;
    }
    while (!scanner.isAt("</record>")) {
        const bool isRead = scanner.take("<rootId>") ? readRootId(scanner, record, isSingle)
                            : scanner.take("<document name=\"")
                                ? readDocument(scanner, record)
                                : scanner.take("<schema name=\"") && readSchema(scanner, record);
        if (!isRead) {
            return false;
        }
    }
    return true;
}

}  // namespace vireo
