#include "_MyClasses/Category/StringUtility.h"
#include "_MyClasses/Category/StringUtilityTexts.h"
#include "platform/foundation/text/UTF8.h"

#include <unordered_set>

namespace kestrine::StringUtility {

namespace {

std::u32string codePointsOf(const NSString& text) {
    std::u32string result;
    for (std::size_t i = 0; i < text.length(); i += utf16Length(result.back()))
        result += codePointAt(text.utf16(), i);
    return result;
}

bool consistsOf(const NSString& text, const NSString& characters) {
    const std::u32string members = codePointsOf(characters);
    const std::unordered_set<char32_t> set(members.begin(), members.end());
    for (const char32_t character : codePointsOf(text))
        if (!set.contains(character))
            return false;
    return true;
}

} // namespace

bool isNumberString(const NSString& receiver) { return consistsOf(receiver, u"0123456789"); }

bool isAlphanumericString(const NSString& receiver, NSBundle& bundle) {
    return consistsOf(receiver, localizedText(bundle, u"alphabetCharacterSet"));
}

bool isHiraganaKatanakaString(const NSString& receiver, NSBundle& bundle) {
    return consistsOf(receiver, localizedText(bundle, u"japaneseCharacterset"));
}

bool isHiraganaKatanakaAlphabetString(const NSString& receiver, NSBundle& bundle) {
    return consistsOf(receiver, localizedText(bundle, u"japaneseCharacterset")
                                    + localizedText(bundle, u"alphabetCharacterSet"));
}

} // namespace kestrine::StringUtility
