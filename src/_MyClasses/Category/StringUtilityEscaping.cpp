#include "_MyClasses/Category/Replacements.h"
#include "_MyClasses/Category/StringUtility.h"

#include <algorithm>

namespace kestrine::StringUtility {

namespace {

/// A separator is not escaped when at most this many code units precede it.
constexpr std::size_t maxUnescapedPrefix = 2;

// Applied in order. The first two undo existing escapes, so that the third escapes each quote once. A
// semicolon needs no escape within quotes.
constexpr Replacement stringsFileReplacements[] = {
    {u"\\\\", u"\\"}, {u"\\\"", u"\""}, {u"\"", u"\\\""}, {u"\\;", u";"}, {u";", u";"}, {u"\\\\n", u"\n"},
};

// RFC 2396: unreserved and reserved characters except letters and digits.
constexpr std::string_view urlPunctuation = "-_.!~*'();/?:@&=+$,";

bool mayStandInURL(char byte) {
    const bool isLetter = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
    return isLetter || (byte >= '0' && byte <= '9') || urlPunctuation.find(byte) != std::string_view::npos;
}

NSString percentEscaped(const NSString& text) {
    constexpr std::u16string_view digits = u"0123456789ABCDEF";
    std::u16string result;
    for (const char byte : text.utf8()) {
        const auto value = static_cast<unsigned char>(byte);
        if (mayStandInURL(byte))
            result += static_cast<char16_t>(value);
        else
            result.append(1, u'%').append(1, digits[value >> 4]).append(1, digits[value & 15]);
    }
    return result;
}

} // namespace

NSString escapeForStringsFile(const NSString& receiver) {
    return replacedInOrder(receiver, stringsFileReplacements);
}

NSString escapedStringWithPercent(const NSString& receiver) {
    const NSString escaped = percentEscaped(receiver);
    return escaped == *replaceStringFrom(receiver, u"%", u"%25") ? receiver : escaped;
}

NSString stringByAppendingBackSlashForCharacter(const NSString& receiver, const NSString& separator) {
    const std::vector<NSString> pieces = receiver.componentsSeparatedBy(separator);
    std::u16string result;
    for (std::size_t i = 0; i + 1 < pieces.size(); i++) {
        result += pieces[i].utf16();
        if (result.size() > maxUnescapedPrefix && result.back() != u'\\')
            result += u'\\';
        result += separator.utf16();
    }
    return result + pieces.back().utf16();
}

} // namespace kestrine::StringUtility
