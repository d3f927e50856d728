#include "platform/foundation/text/TextCollation.h"

#include "platform/foundation/text/Decomposition.h"
#include "platform/foundation/text/UnicodeLibrary.h"

#include <limits>
#include <string>

namespace kestrine {

namespace {

constexpr const char* collationLocale = "";

struct Setting {
    int attribute;
    int value;
};

// ICU's numbers for attributes and their values (ucol.h).
constexpr Setting settings[] = {
    {1, 21}, // alternate handling: punctuation and spaces are not ignored
    {4, 17}, // normalisation on
    {5, 1},  // secondary strength: accents count, case and width do not
    {7, 17}, // digits as numbers
};

struct Kana {
    char16_t first;
    char16_t last;
    char16_t kind;
};

// The letters and iteration marks of both syllabaries. The kinds sort in the order of the syllabaries.
constexpr Kana kanas[] = {
    {u'ぁ', u'ゖ', u'h'}, {u'ゝ', u'ゞ', u'h'}, {u'ァ', u'ヺ', u'k'},
    {u'ヽ', u'ヾ', u'k'}, {u'ㇰ', u'ㇿ', u'k'},
};

std::int32_t lengthOf(std::u16string_view text) { return static_cast<std::int32_t>(text.size()); }

/// Null without ICU. The collator is never closed or changed, so all threads can share it.
const UnicodeCollator* openCollator() {
    const UnicodeCollationFunctions& library = unicodeCollationFunctions();
    if (!library.open || !library.setAttribute || !library.compare)
        return nullptr;
    int errorCode = 0;
    UnicodeCollator* const collator = library.open(collationLocale, &errorCode);
    if (errorCode > 0)
        return nullptr;
    for (const Setting& setting : settings)
        library.setAttribute(collator, setting.attribute, setting.value, &errorCode);
    return errorCode > 0 ? nullptr : collator;
}

/// The kind of each kana in the text.
std::u16string syllabaries(std::u16string_view text) {
    std::u16string kinds;
    // Half-width, circled and squared kana become ordinary ones.
    for (const char16_t unit : decomposed(text, Decomposition::compatible))
        for (const Kana& kana : kanas)
            if (unit >= kana.first && unit <= kana.last)
                kinds += kana.kind;
    return kinds;
}

int signOf(int value) { return (value > 0) - (value < 0); }

} // namespace

int naturalOrder(std::u16string_view text, std::u16string_view other) {
    static const UnicodeCollator* const collator = openCollator();
    constexpr std::size_t longest = std::numeric_limits<std::int32_t>::max();
    if (!collator || text.size() > longest || other.size() > longest)
        return signOf(text.compare(other));
    const int order = unicodeCollationFunctions().compare(collator, text.data(), lengthOf(text), other.data(),
                                                          lengthOf(other));
    if (order != 0 || text == other)
        return signOf(order);
    return signOf(syllabaries(text).compare(syllabaries(other)));
}

} // namespace kestrine
