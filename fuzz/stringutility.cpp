// Markup, escaping and search words of any text: what is left holds no more of what was to go.
#include "_MyClasses/Category/StringUtility.h"

#include <cstdlib>

namespace {

void require(bool condition) {
    if (!condition)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    using namespace kestrine;
    using namespace StringUtility;
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
    return 0;
}
