#include "platform/foundation/text/StringsTable.h"

#include "platform/foundation/text/UTF8.h"

#include <algorithm>
#include <array>
#include <optional>

namespace kestrine {

namespace {

struct LetterEscape {
    char16_t letter;
    char16_t meaning;
};
/// Any other character after a backslash means itself.
constexpr std::array<LetterEscape, 7> escapes{{
    {u'a', u'\a'},
    {u'b', u'\b'},
    {u'f', u'\f'},
    {u'n', u'\n'},
    {u'r', u'\r'},
    {u't', u'\t'},
    {u'v', u'\v'},
}};

bool isSpace(char16_t unit) {
    return unit == u' ' || (unit >= u'\t' && unit <= u'\r') || unit == u'\u2028' || unit == u'\u2029';
}

bool isWordUnit(char16_t unit) {
    const bool isLetter = (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z');
    return isLetter || (unit >= u'0' && unit <= u'9')
           || std::u16string_view(u"_$./:-").find(unit) != std::u16string_view::npos;
}

std::optional<unsigned> digitValue(char16_t unit, unsigned base) {
    const unsigned value = unit >= u'0' && unit <= u'9'   ? unit - u'0'
                           : unit >= u'a' && unit <= u'f' ? unit - u'a' + 10u
                           : unit >= u'A' && unit <= u'F' ? unit - u'A' + 10u
                                                          : base;
    return value < base ? std::optional(value) : std::nullopt;
}

class TableReader {
public:
    explicit TableReader(std::u16string_view rest) : rest_(rest) {}

    Result<StringsTable> read() {
        StringsTable table;
        while (true) {
            if (!skipSpace())
                return unfinished();
            if (rest_.empty())
                return table;
            TRY(readEntry(table));
        }
    }

private:
    static Failure unfinished() {
        return {Reason::truncated, "the strings table ends in the middle of an entry"};
    }
    Failure unexpected() const {
        return rest_.empty() ? unfinished()
                             : Failure{Reason::malformed, "the strings table has an entry of wrong form"};
    }

    bool take(std::u16string_view expected) {
        if (!rest_.starts_with(expected))
            return false;
        rest_.remove_prefix(expected.size());
        return true;
    }

    /// Skips spaces and comments; false when a comment does not end.
    bool skipSpace() {
        while (true) {
            const auto firstOther = std::find_if_not(rest_.begin(), rest_.end(), isSpace);
            rest_.remove_prefix(static_cast<std::size_t>(firstOther - rest_.begin()));
            if (take(u"//")) {
                rest_.remove_prefix(std::min(rest_.find_first_of(u"\n\r"), rest_.size()));
            } else if (take(u"/*")) {
                rest_.remove_prefix(std::min(rest_.find(u"*/"), rest_.size()));
                if (!take(u"*/"))
                    return false;
            } else {
                return true;
            }
        }
    }

    Result<void> readEntry(StringsTable& table) {
        const std::u16string key = TRY(readText());
        std::u16string value = key;
        if (skipSpace() && take(u"=")) {
            skipSpace();
            value = TRY(readText());
        }
        if (!skipSpace() || !take(u";"))
            return unexpected();
        table.insert_or_assign(key, value);
        return {};
    }

    Result<std::u16string> readText() {
        if (take(u"\""))
            return readQuoted(u'"');
        if (take(u"'"))
            return readQuoted(u'\'');
        const auto end = std::find_if_not(rest_.begin(), rest_.end(), isWordUnit);
        const std::u16string word(rest_.begin(), end);
        if (word.empty())
            return unexpected();
        rest_.remove_prefix(word.size());
        return word;
    }

    /// Reads on behind the opening quote, the closing one included.
    Result<std::u16string> readQuoted(char16_t quote) {
        std::u16string text;
        while (!rest_.empty()) {
            const char16_t unit = rest_.front();
            rest_.remove_prefix(1);
            if (unit == quote)
                return text;
            if (unit != u'\\')
                text += unit;
            else if (!rest_.empty())
                text += readEscape();
        }
        return unfinished();
    }

    /// What stands behind a backslash: \Uhhhh, \ooo, or one character.
    char16_t readEscape() {
        if (digitValue(rest_.front(), 8))
            return readNumber(8, 3);
        const char16_t letter = rest_.front();
        rest_.remove_prefix(1);
        if ((letter == u'U' || letter == u'u') && !rest_.empty() && digitValue(rest_.front(), 16))
            return readNumber(16, 4);
        const auto* escape = std::find_if(escapes.begin(), escapes.end(),
                                          [letter](const LetterEscape& row) { return row.letter == letter; });
        return escape == escapes.end() ? letter : escape->meaning;
    }

    char16_t readNumber(unsigned base, int mostDigits) {
        unsigned number = 0;
        for (int i = 0; i < mostDigits && !rest_.empty() && digitValue(rest_.front(), base); i++) {
            number = number * base + *digitValue(rest_.front(), base);
            rest_.remove_prefix(1);
        }
        return static_cast<char16_t>(number);
    }

    std::u16string_view rest_;
};

bool hasPrefix(ByteView content, std::initializer_list<std::uint8_t> prefix) {
    return content.size() >= prefix.size() && std::equal(prefix.begin(), prefix.end(), content.begin());
}

Result<std::u16string> decodedUTF16(ByteView content, std::size_t highByte) {
    if (content.size() % 2 != 0)
        return Failure{Reason::truncated, "the strings table ends in the middle of a character"};
    std::u16string text;
    text.reserve(content.size() / 2);
    for (std::size_t i = 0; i < content.size(); i += 2)
        text += static_cast<char16_t>(content[i + highByte] << 8 | content[i + 1 - highByte]);
    return text;
}

Result<std::u16string> decoded(ByteView content) {
    if (hasPrefix(content, {0xfe, 0xff}))
        return decodedUTF16(content.subspan(2), 0);
    if (hasPrefix(content, {0xff, 0xfe}))
        return decodedUTF16(content.subspan(2), 1);
    if (hasPrefix(content, {0xef, 0xbb, 0xbf}))
        content = content.subspan(3);
    return utf16FromUTF8({reinterpret_cast<const char*>(content.data()), content.size()});
}

} // namespace

Result<StringsTable> parseStringsTable(ByteView content) {
    if (content.size() > largestStringsTable)
        return Failure{Reason::tooLarge, "the strings table is longer than 4 MiB"};
    const std::u16string text = TRY(decoded(content));
    return TableReader(text).read();
}

} // namespace kestrine
