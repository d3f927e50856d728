#include "platform/foundation/text/NSStringSearch.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/text/TextSearch.h"
#include "platform/foundation/text/UTF8.h"
#include "platform/foundation/text/UnicodeCase.h"

#include <algorithm>

namespace kestrine {

namespace {

constexpr NSRange notFound{NSNotFound, 0};

/// Whether `index` is between the halves of a surrogate pair.
bool dividesPair(std::u16string_view text, std::size_t index) {
    return index > 0 && index < text.size() && isHighSurrogate(text[index - 1])
           && isLowSurrogate(text[index]);
}

/// `range` without half surrogate pairs at its ends.
NSRange wholeCharacters(std::u16string_view text, NSRange range) {
    const std::size_t start = range.location + (dividesPair(text, range.location) ? 1 : 0);
    const std::size_t end = range.end() - (dividesPair(text, range.end()) ? 1 : 0);
    return {start, std::max(start, end) - start};
}

struct FoldedText {
    std::u32string codePoints;
    std::vector<std::size_t> starts; // start of each code point in the text, and the end of the text
};

FoldedText folded(std::u16string_view text) {
    FoldedText result;
    for (std::size_t i = 0; i < text.size();) {
        const char32_t codePoint = codePointAt(text, i);
        result.codePoints += caseFolded(codePoint);
        result.starts.push_back(i);
        i += utf16Length(codePoint);
    }
    result.starts.push_back(text.size());
    return result;
}

NSRange searchFolded(std::u16string_view text, std::u16string_view part) {
    const FoldedText where = folded(text);
    const FoldedText what = folded(part);
    const std::size_t hit = findText<char32_t>(where.codePoints, what.codePoints);
    if (hit == std::u32string::npos)
        return notFound;
    const std::size_t start = where.starts[hit];
    return {start, where.starts[hit + what.codePoints.size()] - start};
}

} // namespace

NSRange rangeOfString(const NSString& text, const NSString& part, unsigned options, NSRange range) {
    if (range.location > text.length() || range.length > text.length() - range.location)
        throw NSException(NSRangeException, "the range exceeds the string");
    if (part.isEmpty())
        return notFound;
    const bool isCaseInsensitive = options & NSCaseInsensitiveSearch;
    if (isCaseInsensitive)
        range = wholeCharacters(text.utf16(), range);
    const std::u16string_view searched =
        std::u16string_view(text.utf16()).substr(range.location, range.length);
    NSRange found = notFound;
    if (isCaseInsensitive)
        found = searchFolded(searched, part.utf16());
    else if (const std::size_t hit = findText<char16_t>(searched, part.utf16());
             hit != std::u16string_view::npos)
        found = {hit, part.length()};
    if (found.length > 0)
        found.location += range.location;
    return found;
}

NSRange rangeOfString(const NSString& text, const NSString& part, unsigned options) {
    return rangeOfString(text, part, options, {0, text.length()});
}

} // namespace kestrine
