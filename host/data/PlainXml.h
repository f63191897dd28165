#pragma once

#include <array>
#include <cstddef>
#include <cstring>
#include <string_view>

namespace vireo {

/// An element with a text, or with elements that have texts. Refers to what it was read from.
struct PlainRow {
    struct Cell {
        std::string_view name;
        std::string_view text;  ///< as it is written
    };
    /// More are not plain.
    static constexpr std::size_t kMostCells = 16;

    std::string_view name;
    std::string_view text;  ///< when there are no cells
    std::array<Cell, kMostCells> cells;
    std::size_t count = 0;  ///< of the cells; each has another name

    std::string_view written;  ///< from the layout before it to its end tag
    bool isPattern = false;    ///< whether each text stands between tags of its own
    bool isAlike = false;      ///< whether only the texts differ from those of the row before
};

/// A place in XML text of the plain form that people and generators write: ASCII names, elements
/// without attributes, comments between elements. Every function that answers false has met
/// something else, well-formed or not. It is left to the parser that knows all of XML; the place is
/// undefined then.
class PlainXml {
public:
    explicit PlainXml(std::string_view text)
        : m_next(text.data()), m_end(text.data() + text.size()) {}

    const char* place() const { return m_next; }
    bool isAtEnd() const { return m_next == m_end; }

    /// Whether `mark` stands here; moves behind it. The place stays when not.
    bool take(std::string_view mark) {
        if (left() < mark.size() || std::memcmp(m_next, mark.data(), mark.size()) != 0) {
            return false;
        }
        m_next += mark.size();
        return true;
    }
    /// Moves behind the next `mark`.
    bool moveBehind(std::string_view mark);
    /// Moves behind blanks and comments.
    bool skipLayout();
    /// Reads blanks and one attribute, whose value needs no decoding.
    bool takeAttribute(std::string_view& name, std::string_view& value);
    /// Reads blanks and the end of a start tag; the place stays when it is not there.
    bool takeTagEnd();
    /// Reads layout and an element. `row` may hold the one before, from a text that is still there:
    /// most rows are written like the one before them, which takes a fraction of the time.
    bool takeRow(PlainRow& row);
    /// Likewise; false at the end of the text.
    bool takeNextRow(PlainRow& row) { return !isAtEnd() && takeRow(row); }

private:
    std::size_t left() const { return static_cast<std::size_t>(m_end - m_next); }
    std::string_view since(const char* begin) const {
        return {begin, static_cast<std::size_t>(m_next - begin)};
    }
    void skipBlanks();
    std::string_view takeName();
    bool moveToTag();
    bool takeStartTag(std::string_view& name, bool& isEmpty);
    bool takeEndTag(std::string_view name);
    bool takeAlike(PlainRow& row);
    bool takeOther(PlainRow& row);
    bool takeCell(PlainRow& row);

    const char* m_next;
    const char* m_end;
};

}  // namespace vireo
