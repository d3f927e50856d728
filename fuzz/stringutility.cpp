// Removes markup, escapes and search words from any string. The result must not contain them, and removing
// all spans at once must give the same result as removing them one by one.
#include "_MyClasses/Category/StringUtility.h"
#include "fuzz/Require.h"

#include <algorithm>

namespace {

constexpr std::size_t longestStepwise = 1000; // removing one by one takes quadratic time

/// The first code units of `text` are the two delimiters. The last two bits of the first unit define their
/// lengths, 1 or 2.
void requireStepsOfRemoval(const kestrine::NSString& text) {
    using namespace kestrine;
    using fuzzing::require;
    if (text.length() < 6)
        return;
    const std::size_t first = 1 + (text[0] & 1u), second = 1 + (text[0] >> 1 & 1u);
    const NSString opening = text.substring({1, first}), closing = text.substring({1 + first, second});
    const NSString rest = text.substring({5, std::min(text.length() - 5, longestStepwise)});
    NSString expected = rest;
    while (StringUtility::rangeOfStringFrom(expected, opening, closing).length != 0)
        expected = StringUtility::removeStringFrom(expected, opening, closing);
    require(StringUtility::removeAllStringStartFrom(rest, opening, closing) == expected);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    using namespace kestrine;
    using namespace StringUtility;
    using fuzzing::require;
    static NSBundle bundle("", Environment{});
    const NSString text = NSString::fromUTF8({reinterpret_cast<const char*>(bytes), size});
    require(removeAllHTMLTag(text).length() <= text.length());
    require(!replaceReturnCode(text).contains(u"\r"));
    require(!escapedStringWithPercent(text).contains(u" "));
    require(!escapeForStringsFile(text).contains(u";") || text.contains(u";"));
    require(stringByAppendingBackSlashForCharacter(text, u",").length() >= text.length());
    require(dividePointUpToLength(text, size / 2, bundle) <= text.length());
    for (const NSNumber& day : separateDateKeyToArray(text, bundle))
        require(day.intValue() >= 0);
    for (const NSString& word : separateStringKeyToArray(text, bundle))
        require(!word.contains(u"\""));
    require(naturalCompare(text, text) == 0);
    requireStepsOfRemoval(text);
    return 0;
}
