#include "log/SecretMask.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <optional>

namespace vireo {
namespace {

constexpr std::string_view kWords[] = {"password", "passwd", "passphrase", "pwd", "secret"};
constexpr std::string_view kWholeWord = "pin";
constexpr std::size_t kNowhere = std::string_view::npos;

constexpr std::string_view kColumn = "VCMS getDasData (schema=";
constexpr std::string_view kColumnValue = "VCMS getDasData (item val = ";

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool isLetter(char c) {
    return lower(c) >= 'a' && lower(c) <= 'z';
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool isNamePart(char c) {
    return isLetter(c) || isDigit(c) || c == '-' || c == '_' || c == '.';
}

bool hasWordAt(std::string_view name, std::size_t at, std::string_view word) {
    return name.size() - at >= word.size() &&
           std::equal(word.begin(), word.end(), name.begin() + static_cast<std::ptrdiff_t>(at),
                      [](char ours, char theirs) { return ours == lower(theirs); });
}

bool isWholeWordAt(std::string_view name, std::size_t at) {
    const std::size_t end = at + kWholeWord.size();
    return hasWordAt(name, at, kWholeWord) && (at == 0 || !isLetter(name[at - 1])) &&
           (end >= name.size() || !isLetter(name[end]));
}

bool namesSecret(std::string_view name) {
    for (std::size_t at = 0; at < name.size(); ++at) {
        if (std::any_of(std::begin(kWords), std::end(kWords),
                        [&](std::string_view word) { return hasWordAt(name, at, word); }) ||
            isWholeWordAt(name, at)) {
            return true;
        }
    }
    return false;
}

/// How XML stands in a text: as it is, or escaped because it is a value of other XML.
struct Brackets {
    std::string_view open;
    std::string_view close;
};
constexpr Brackets kPlain{"<", ">"};
constexpr Brackets kEscaped{"&lt;", "&gt;"};

/// One way through one line.
class Masking {
public:
    explicit Masking(std::string_view text) : m_text(text) {}

    bool run(std::string& masked) {
        while (m_at < m_text.size()) {
            if (isNamePart(m_text[m_at])) {
                passName();
            } else {
                passOther();
            }
        }
        if (m_copied == 0) {
            return false;
        }
        m_out.append(m_text.substr(m_copied));
        masked = std::move(m_out);
        return true;
    }

private:
    bool stands(std::string_view what, std::size_t at) const {
        return at <= m_text.size() && m_text.substr(at).starts_with(what);
    }

    void hide(std::size_t begin, std::size_t end) {
        end = std::min(end, m_text.size());
        if (begin < end) {
            m_out.append(m_text.substr(m_copied, begin - m_copied)).append(SecretMask::kInstead);
            m_copied = end;
        }
        m_at = std::max(m_at, end);
    }

    void passOther() {
        for (const Brackets& brackets : {kPlain, kEscaped}) {
            if (stands(brackets.open, m_at)) {
                m_brackets = brackets;
                m_tag = m_at + brackets.open.size();
                m_at = m_tag;
                return;
            }
            if (stands(brackets.close, m_at)) {
                m_tag = kNowhere;
                m_at += brackets.close.size();
                return;
            }
        }
        if (stands("://", m_at)) {
            m_at += 3;
            passAddress();
            return;
        }
        ++m_at;
    }

    /// user:password@host
    void passAddress() {
        std::size_t colon = kNowhere;
        for (std::size_t at = m_at; at < m_text.size(); ++at) {
            const char c = m_text[at];
            if (c == ':' && colon == kNowhere) {
                colon = at;
            } else if (c == '@' && colon != kNowhere) {
                hide(colon + 1, at);
                return;
            } else if (std::string_view(" \"'<>/&,").find(c) != kNowhere) {
                return;
            }
        }
    }

    void passName() {
        const std::size_t begin = m_at;
        while (m_at < m_text.size() && isNamePart(m_text[m_at])) {
            ++m_at;
        }
        if (!namesSecret(m_text.substr(begin, m_at - begin))) {
            return;
        }
        if (m_tag != kNowhere) {
            hideOfElement();
        } else if (const auto name = countedName(begin)) {
            hideOfParameter(*name);
        } else {
            hideBehindName();
        }
    }

    void hideOfElement() {
        if (stands("=\"", m_at) || stands("='", m_at)) {
            const char quote = m_text[m_at + 1];
            hide(m_at + 2, m_text.find(quote, m_at + 2));
            return;
        }
        if (m_text[m_tag] == '/') {
            return;
        }
        const std::size_t end = endOfTag();
        if (end != kNowhere && m_text[end - 1] == '/') {
            return;
        }
        if (end == kNowhere) {
            hide(m_at, m_text.size());
            return;
        }
        m_at = end + m_brackets.close.size();
        const std::size_t closing = endOfElement();
        m_tag = kNowhere;
        hide(m_at, closing);
    }

    /// The bracket behind here that closes a tag. A hostile line may have names without number
    /// before it, so it is looked for once.
    std::size_t endOfTag() {
        if (m_tagEndOf != m_brackets.close || m_tagEnd < m_at) {
            m_tagEndOf = m_brackets.close;
            m_tagEnd = m_text.find(m_brackets.close, m_at);
        }
        return m_tagEnd;
    }

    /// Where the end tag of the open element begins.
    std::size_t endOfElement() const {
        const auto nameEnd = static_cast<std::size_t>(
            std::find_if_not(m_text.begin() + static_cast<std::ptrdiff_t>(m_tag), m_text.end(),
                             isNamePart) -
            m_text.begin());
        const std::string_view name = m_text.substr(m_tag, nameEnd - m_tag);
        std::size_t depth = 1;
        for (std::size_t at = m_text.find(m_brackets.open, m_at); at != kNowhere;
             at = m_text.find(m_brackets.open, at + 1)) {
            const std::size_t inside = at + m_brackets.open.size();
            const bool isEnd = stands("/", inside);
            const std::size_t other = inside + (isEnd ? 1 : 0);
            if (!stands(name, other) ||
                (other + name.size() < m_text.size() && isNamePart(m_text[other + name.size()]))) {
                continue;
            }
            depth = isEnd ? depth - 1 : depth + 1;
            if (depth == 0) {
                return at;
            }
        }
        return kNowhere;
    }

    std::optional<std::size_t> numberAt(std::size_t& at) const {
        std::size_t value = 0;
        const auto [end, error] =
            std::from_chars(m_text.data() + at, m_text.data() + m_text.size(), value);
        const auto behind = static_cast<std::size_t>(end - m_text.data());
        if (error != std::errc{} || !stands(";", behind)) {
            return std::nullopt;
        }
        at = behind + 1;
        return value;
    }

    /// The end of a text whose length stands before it, as in `8;password`.
    std::optional<std::size_t> countedName(std::size_t begin) const {
        std::size_t number = begin == 0 || m_text[begin - 1] != ';' ? begin : begin - 1;
        const std::size_t last = number;
        while (number > 0 && isDigit(m_text[number - 1])) {
            --number;
        }
        if (number == last || last == begin) {
            return std::nullopt;
        }
        const auto length = numberAt(number);
        const bool isHere = length && *length <= m_text.size() - begin &&
                            namesSecret(m_text.substr(begin, *length));
        return isHere ? std::optional(begin + *length) : std::nullopt;
    }

    /// Type, direction and value follow the name of a parameter.
    void hideOfParameter(std::size_t nameEnd) {
        constexpr std::size_t kLastType = 3;
        constexpr std::size_t kXml = 3;
        constexpr std::size_t kString = 1;
        std::size_t at = nameEnd;
        m_at = nameEnd;
        const auto type = numberAt(at);
        const auto direction = type ? numberAt(at) : std::nullopt;
        if (!direction || *type > kLastType) {
            hide(nameEnd, m_text.size());
            return;
        }
        if (*type != kString && *type != kXml) {
            hide(at, m_text.find(';', at));
            return;
        }
        const auto length = numberAt(at);
        if (!length) {
            hide(nameEnd, m_text.size());
            return;
        }
        hide(at, *length < m_text.size() - at ? at + *length : m_text.size());
    }

    void hideBehindName() {
        constexpr std::string_view kInput = "! input=";
        if (stands(kInput, m_at)) {
            hide(m_at + kInput.size(), m_text.size());
            return;
        }
        std::size_t at = m_at;
        if (stands("\"", at) || stands("'", at)) {
            ++at;
        }
        const std::size_t sign = m_text.find_first_not_of(' ', at);
        const bool isAssigned = sign != kNowhere && m_text[sign] == '=';
        if (isAssigned || stands(",", at) || stands(":", at)) {
            const std::size_t value = m_text.find_first_not_of(' ', (isAssigned ? sign : at) + 1);
            hide(std::min(value, m_text.size()), m_text.size());
        }
    }

    const std::string_view m_text;
    std::string m_out;
    std::size_t m_copied = 0;  ///< so much of the text is in `m_out`, or left out
    std::size_t m_at = 0;
    std::size_t m_tag = kNowhere;  ///< where the open tag's name begins
    std::size_t m_tagEnd = 0;      ///< the last answer of `endOfTag`
    std::string_view m_tagEndOf;
    Brackets m_brackets = kPlain;
};

/// Whether the next column value of this thread is one of a secret.
thread_local bool g_isColumnSecret = false;

}  // namespace

bool SecretMask::apply(std::string_view text, std::string& masked) {
    if (text.starts_with(kColumn)) {
        g_isColumnSecret = namesSecret(text);
    } else if (text.starts_with(kColumnValue)) {
        if (g_isColumnSecret) {
            masked.assign(kColumnValue).append(kInstead).append(")");
        }
        return g_isColumnSecret;
    }
    return Masking(text).run(masked);
}

}  // namespace vireo
