#include "_MyClasses/Category/BracketedSpans.h"
#include "_MyClasses/Category/SpanRemoval.h"
#include "_MyClasses/Category/StringUtility.h"
#include "platform/foundation/text/NSStringSearch.h"

namespace kestrine::StringUtility {

namespace {

constexpr unsigned literalSearch = 0;

NSString joined(const std::vector<NSString>& pieces, const NSString& separator) {
    std::u16string text = pieces.front().utf16();
    for (std::size_t i = 1; i < pieces.size(); i++)
        text.append(separator.utf16()).append(pieces[i].utf16());
    return text;
}

/// The text from `start` to the first occurrence of `closing`; nil when that is missing or at `start`.
OptionalString substringBefore(const NSString& receiver, std::size_t start, const NSString& closing) {
    const NSRange hit =
        rangeOfString(receiver, closing, NSCaseInsensitiveSearch, {start, receiver.length() - start});
    if (hit.length == 0 || hit.location == start)
        return std::nullopt;
    return receiver.substring({start, hit.location - start});
}

} // namespace

OptionalString removeString(const NSString& receiver, const NSString& text) {
    return joined(receiver.componentsSeparatedBy(text), u"");
}

OptionalString replaceStringFrom(const NSString& receiver, const NSString& text,
                                 const NSString& replacement) {
    if (text.isEmpty())
        return receiver;
    return joined(receiver.componentsSeparatedBy(text), replacement);
}

NSRange rangeOfStringFrom(const NSString& receiver, const NSString& opening, const NSString& closing,
                          NSRange range) {
    if (receiver.isEmpty() || opening.isEmpty() || closing.isEmpty())
        return {};
    const NSRange first = rangeOfString(receiver, opening, literalSearch, range);
    if (first.length == 0)
        return {};
    const NSRange rest{first.end(), range.end() - first.end()};
    const NSRange last = rangeOfString(receiver, closing, literalSearch, rest);
    if (last.length == 0)
        return {};
    return {first.location, last.end() - first.location};
}

NSRange rangeOfStringFrom(const NSString& receiver, const NSString& opening, const NSString& closing) {
    return rangeOfStringFrom(receiver, opening, closing, {0, receiver.length()});
}

NSString removeStringFrom(const NSString& receiver, const NSString& opening, const NSString& closing) {
    const NSRange span = rangeOfStringFrom(receiver, opening, closing);
    return span.length == 0 ? receiver : *removeString(receiver, receiver.substring(span));
}

NSString removeAllStringStartFrom(const NSString& receiver, const NSString& opening,
                                  const NSString& closing) {
    if (rangeOfStringFrom(receiver, opening, closing).length == 0)
        return receiver;
    if (opening.length() == 1 && closing.length() == 1)
        return opening == closing
                   ? takeQuotedSpans(receiver.utf16(), opening[0], EmptySpan::isRemoved).rest
                   : withoutBracketedSpans(receiver.utf16(), opening[0], closing[0], EmptySpan::isRemoved);
    if (std::optional<std::u16string> swept =
            removedInOneSweep(receiver.utf16(), opening.utf16(), closing.utf16()))
        return std::move(*swept);
    NSString current = receiver;
    while (rangeOfStringFrom(current, opening, closing).length != 0)
        current = removeStringFrom(current, opening, closing);
    return current;
}

OptionalString substringFrom(const NSString& receiver, const NSString& opening, const NSString& closing,
                             NSRange range) {
    if (range.location > receiver.length() || range.length > receiver.length() - range.location)
        return std::nullopt;
    const NSRange hit = rangeOfString(receiver, opening, NSCaseInsensitiveSearch, range);
    return hit.length == 0 ? std::nullopt : substringBefore(receiver, hit.end(), closing);
}

OptionalString substringFrom(const NSString& receiver, const OptionalString& opening,
                             const NSString& closing) {
    return opening ? substringFrom(receiver, *opening, closing, {0, receiver.length()}) : std::nullopt;
}

OptionalString substringFrom(const NSString& receiver, const NSString& opening) {
    const NSRange hit = rangeOfString(receiver, opening, NSCaseInsensitiveSearch);
    if (hit.length == 0 || hit.end() == receiver.length())
        return std::nullopt;
    return receiver.substring({hit.end(), receiver.length() - hit.end()});
}

OptionalString substringTo(const NSString& receiver, const NSString& closing) {
    return substringBefore(receiver, 0, closing);
}

} // namespace kestrine::StringUtility
