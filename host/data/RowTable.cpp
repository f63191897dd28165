#include "data/RowTable.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "data/XmlText.h"
#include "data/XmlTree.h"

namespace vireo {
namespace {

struct Head {
    std::string_view name;
    std::string_view schema;
};

/// A start tag with a name and a schema, each once, and nothing else.
std::optional<Head> readHead(PlainXml& xml) {
    Head head;
    std::string_view attribute;
    std::string_view value;
    if (!xml.take("<document")) {
        return std::nullopt;
    }
    while (!xml.takeTagEnd()) {
        if (!xml.takeAttribute(attribute, value)) {
            return std::nullopt;
        }
        std::string_view& part = attribute == "name" ? head.name : head.schema;
        if ((attribute != "name" && attribute != "schema") || !part.empty() || value.empty()) {
            return std::nullopt;
        }
        part = value;
    }
    return head.name.empty() || !XmlText::isName(head.schema) ? std::nullopt : std::optional(head);
}

bool isDecodable(const PlainRow& row) {
    std::string text;
    const auto isGood = [&text](const PlainRow::Cell& cell) {
        return RowTable::decode(cell.text, text);
    };
    return RowTable::decode(row.text, text) &&
           std::all_of(row.cells.begin(),
                       row.cells.begin() + static_cast<std::ptrdiff_t>(row.count), isGood);
}

std::shared_ptr<DxlNode> makeLeaf(std::string_view name, std::string_view written) {
    std::string text;
    RowTable::decode(written, text);
    return std::make_shared<DxlNode>(std::string(name), DxlNode::Kind::eLeaf, std::move(text));
}

}  // namespace

DxlDocumentPointer RowTable::readDocument(PlainXml& xml,
                                          const std::shared_ptr<const std::string>& file) {
    PlainXml place = xml;
    const auto head = readHead(place);
    if (!head) {
        return nullptr;
    }
    const std::shared_ptr<RowTable> table(new RowTable(std::string(head->schema)));
    table->m_file = file;
    if (!table->readRows(place)) {
        return nullptr;
    }
    xml = place;
    return std::make_shared<const DxlDocument>(std::string(head->name), table);
}

bool RowTable::readRows(PlainXml& xml) {
    const char* const begin = xml.place();
    PlainXml behind = xml;
    for (PlainRow row; xml.takeRow(row); behind = xml) {
        m_hasCells = m_hasCells || row.count > 0;
        ++m_count;
    }
    m_rows = {begin, static_cast<std::size_t>(behind.place() - begin)};
    m_hasReferences = m_rows.find('&') != std::string_view::npos;
    xml = behind;
    return m_count > 0 && xml.skipLayout() && xml.take("</document>") &&
           (!m_hasReferences || areDecodable());
}

bool RowTable::areDecodable() const {
    PlainXml xml = rows();
    PlainRow row;
    bool isGood = true;
    while (isGood && xml.takeNextRow(row)) {
        isGood = isDecodable(row);
    }
    return isGood;
}

bool RowTable::decode(std::string_view written, std::string& text) {
    if (written.find('&') == std::string_view::npos) {
        text = written;
        return true;
    }
    DxlNode leaf(std::string(), DxlNode::Kind::eLeaf);
    const bool isGood = XmlTree::parseFragment(written, leaf);
    text = leaf.text();
    return isGood;
}

DxlNode::Pointer RowTable::makeRoot() const {
    auto root = std::make_shared<DxlNode>(getName(), DxlNode::Kind::eBranch);
    PlainXml xml = rows();
    for (PlainRow row; xml.takeNextRow(row);) {
        auto node = makeLeaf(row.name, row.text);
        for (std::size_t i = 0; i < row.count; ++i) {
            node->append(makeLeaf(row.cells[i].name, row.cells[i].text));
        }
        root->append(std::move(node));
    }
    return root;
}

}  // namespace vireo
