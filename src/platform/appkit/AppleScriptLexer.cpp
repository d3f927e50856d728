#include "platform/appkit/AppleScriptLexer.h"

#include <algorithm>

namespace kestrine {

namespace {

using Kind = AppleScriptToken::Kind;

bool isLetter(char16_t unit) { return (unit >= u'A' && unit <= u'Z') || (unit >= u'a' && unit <= u'z'); }

} // namespace

AppleScriptToken AppleScriptLexer::next() {
    const std::u16string& units = source_.utf16();
    position_ = std::min(units.find_first_not_of(u" \t", position_), units.size());
    if (position_ == units.size())
        return taken(Kind::end, 0);
    const char16_t first = units[position_];
    if (first == u'\n')
        return taken(Kind::lineEnd, 1);
    if (first == u'"')
        return quotedText();
    if (first == u'{' || first == u'}' || first == u',')
        return taken(Kind::sign, 1);
    const auto start = units.begin() + static_cast<std::ptrdiff_t>(position_);
    const auto letters = std::find_if_not(start, units.end(), isLetter) - start;
    return letters > 0 ? taken(Kind::word, static_cast<std::size_t>(letters)) : taken(Kind::unknown, 1);
}

AppleScriptToken AppleScriptLexer::quotedText() {
    const std::size_t stop = source_.utf16().find_first_of(u"\"\\", position_ + 1);
    if (stop == std::u16string::npos)
        return taken(Kind::openText, source_.length() - position_);
    if (source_[stop] == u'\\')
        return taken(Kind::escapingText, stop + 1 - position_);
    return taken(Kind::text, stop + 1 - position_);
}

AppleScriptToken AppleScriptLexer::taken(AppleScriptToken::Kind kind, std::size_t length) {
    const NSRange range{position_, length};
    position_ += length;
    if (kind == Kind::text)
        return {kind, range, source_.substring({range.location + 1, length - 2})};
    return {kind, range, kind == Kind::word || kind == Kind::sign ? source_.substring(range) : NSString()};
}

} // namespace kestrine
