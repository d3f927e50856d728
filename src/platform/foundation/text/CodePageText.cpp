#include "platform/foundation/text/CodePageText.h"

#include "platform/foundation/text/UnicodeLibrary.h"

#include <algorithm>
#include <limits>

namespace kestrine {

namespace {

struct CodePage {
    NSStringEncoding encoding;
    const char* converter; // ICU's name
};

constexpr CodePage codePages[] = {
    {NSISO2022JPStringEncoding, "ISO_2022,locale=ja,version=0"},
    {NSShiftJISStringEncoding, "ibm-943_P15A-2003"},
    {NSJapaneseEUCStringEncoding, "euc-jp-2007"},
    {NSMacOSRomanStringEncoding, "macos-0_2-10.2"},
    {NSWindowsCP1251StringEncoding, "ibm-5347_P100-1998"},
    {NSWindowsCP1252StringEncoding, "ibm-5348_P100-1997"},
    {NSWindowsCP1253StringEncoding, "ibm-5349_P100-1998"},
    {NSWindowsCP1254StringEncoding, "ibm-5350_P100-1998"},
    {NSWindowsCP1250StringEncoding, "ibm-5346_P100-1998"},
};

struct ConverterCloser {
    void operator()(UnicodeConverter* converter) const { unicodeConverterFunctions().close(converter); }
};
using ConverterHandle = std::unique_ptr<UnicodeConverter, ConverterCloser>;

/// A converter that stops at the first invalid byte; null if ICU or the table is missing.
ConverterHandle openConverter(const char* name) {
    const UnicodeConverterFunctions& library = unicodeConverterFunctions();
    if (!library.open || !library.close || !library.setToUnicodeCallback || !library.toUnicode
        || !library.stopAtMalformed)
        return nullptr;
    int errorCode = 0;
    ConverterHandle converter(library.open(name, &errorCode));
    if (errorCode > 0)
        return nullptr;
    UnicodeConverterFunctions::Callback* oldCallback = nullptr;
    const void* oldContext = nullptr;
    library.setToUnicodeCallback(converter.get(), library.stopAtMalformed, nullptr, &oldCallback, &oldContext,
                                 &errorCode);
    return errorCode > 0 ? nullptr : std::move(converter);
}

/// ICU's table for Shift JIS permutes three control characters, as on mainframes. Files use them as in ASCII.
char16_t asciiControl(char16_t unit) {
    switch (unit) {
    case 0x1c:
        return 0x1a;
    case 0x7f:
        return 0x1c;
    case 0x1a:
        return 0x7f;
    default:
        return unit;
    }
}

/// Characters to which ICU's tables map unassigned bytes. The encodings do not contain these characters, and
/// no C1 control characters either.
struct Filling {
    NSStringEncoding encoding;
    std::u16string_view characters;
};

constexpr Filling fillings[] = {
    {NSJapaneseEUCStringEncoding, u"¢£¬"},
    {NSWindowsCP1253StringEncoding, u"ª"},
};

bool isFilling(char16_t unit, NSStringEncoding encoding) {
    if (unit >= 0x80 && unit <= 0x9f)
        return true;
    return std::any_of(std::begin(fillings), std::end(fillings), [=](const Filling& filling) {
        return filling.encoding == encoding && filling.characters.find(unit) != std::u16string_view::npos;
    });
}

/// None of the encodings has a character that takes more code units than bytes.
std::optional<std::u16string> converted(ByteView bytes, const char* converterName) {
    const ConverterHandle converter = openConverter(converterName);
    if (!converter || bytes.size() > std::numeric_limits<std::int32_t>::max())
        return std::nullopt;
    std::u16string text(bytes.size(), u'\0');
    const auto size = static_cast<std::int32_t>(bytes.size());
    int errorCode = 0;
    const std::int32_t length = unicodeConverterFunctions().toUnicode(
        converter.get(), text.data(), size, reinterpret_cast<const char*>(bytes.data()), size, &errorCode);
    if (errorCode > 0)
        return std::nullopt;
    text.resize(static_cast<std::size_t>(length));
    return text;
}

} // namespace

OptionalString textFromCodePage(ByteView bytes, NSStringEncoding encoding) {
    const auto codePage = std::find_if(std::begin(codePages), std::end(codePages),
                                       [=](const CodePage& page) { return page.encoding == encoding; });
    if (codePage == std::end(codePages))
        return std::nullopt;
    std::optional<std::u16string> text = converted(bytes, codePage->converter);
    if (!text || std::any_of(text->begin(), text->end(), [=](char16_t c) { return isFilling(c, encoding); }))
        return std::nullopt;
    if (encoding == NSShiftJISStringEncoding)
        std::transform(text->begin(), text->end(), text->begin(), asciiControl);
    return NSString(std::move(*text));
}

} // namespace kestrine
