// tagDescription: the values of a file as text, by the names of their accessors.
#include "_MyClasses/Class/ExifTag/ExifAccessor.h"
#include "_MyClasses/Class/ExifTag/ExifTagReader.h"
#include "platform/foundation/NSBundle.h"

#include <algorithm>
#include <array>

namespace kestrine {

namespace {

constexpr const char16_t* noInformation = u"Exif information is not available";

/// The lines in order; an empty name separates two sections.
constexpr std::array<std::string_view, 30> entries{
    "maker",
    "cameraName",
    "compressedBitsPerPixel",
    "dateTimeOriginal",
    "dateTimeDigitized",
    "",
    "fNumber",
    "shutterSpeed",
    "lensAperture",
    "maxAperture",
    "subjectDistance",
    "focalLength",
    "focalLengthIn35mmFilm",
    "",
    "exposureMode",
    "exposureTime",
    "brightness",
    "exposureBias",
    "meteringMode",
    "ISOSpeedRatings",
    "lightSource",
    "flash",
    "",
    "subjectDistanceRange",
    "digitalZoomRatio",
    "whiteBalance",
    "gainControl",
    "contrast",
    "saturation",
    "sharpness",
};

// Values in the format in which the platform prints them. In a valid file these values are strings.

NSString printed(const NSString& text) { return text; }

/// The bytes as hexadecimal digits in groups of four bytes: <4e2f4100 07>.
NSString printed(const ByteBlock& bytes) {
    constexpr std::u16string_view digits = u"0123456789abcdef";
    std::u16string text = u"<";
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i > 0 && i % 4 == 0)
            text += u' ';
        text += {digits[bytes[i] >> 4], digits[bytes[i] & 15]};
    }
    return text + u">";
}

/// One number per line in parentheses; numbers with a sign or a decimal point are quoted.
NSString printed(const NumberList& list) {
    std::string text = "(";
    for (const NSNumber& number : list) {
        const std::string digits = number.stringValue();
        const bool quoted = digits.find_first_of("+-.") != std::string::npos;
        text += (&number == &list.front() ? "\n    " : ",\n    ") + (quoted ? '"' + digits + '"' : digits);
    }
    return NSString::fromUTF8(text + "\n)");
}

OptionalString printed(StoredValue value) {
    if (!value)
        return std::nullopt;
    return std::visit([](const auto& content) { return printed(content); }, *value);
}

OptionalString printed(const OptionalNumber& number) {
    return number ? OptionalString(NSString::fromUTF8(number->stringValue())) : std::nullopt;
}

struct NamedAccessor {
    std::string_view name;
    OptionalString (*text)(ExifTagReader& reader);
};

constexpr NamedAccessor accessors[] = {
#define VALUE(name, directory, tag, rule, Kind)                                                              \
    {#name, [](ExifTagReader& reader) { return printed(reader.name()); }},
#define FORMATTED(name, valueAccessor, format, valueFormatted)                                               \
    {#name, [](ExifTagReader& reader) { return OptionalString(reader.name()); }},
#define LOCALIZED(name, valueAccessor, key)                                                                  \
    {#name, [](ExifTagReader& reader) { return OptionalString(reader.name()); }},
#define COMPUTED(name) {#name, [](ExifTagReader& reader) { return OptionalString(reader.name()); }},
#include "_MyClasses/Class/ExifTag/ExifAccessorTable.h"
};

/// The result of the accessor with that name, which must exist.
OptionalString resultOf(ExifTagReader& reader, std::string_view name) {
    return std::ranges::find(accessors, name, &NamedAccessor::name)->text(reader);
}

} // namespace

NSString ExifTagReader::tagDescription() {
    if (!tagDictionary())
        return localizedText(noInformation);
    std::u16string text;
    for (const std::string_view entry : entries) {
        const NSString value = entry.empty() ? NSString() : resultOf(*this, entry).value_or(notAvailable);
        if (entry.empty())
            text += u"\n";
        else if (value != notAvailable)
            text += localizedText(NSString::fromUTF8(entry)).utf16() + u" : " + value.utf16() + u"\n";
    }
    return text;
}

NSString ExifTagReader::tagDescriptionWithPath(const NSString& path, NSBundle* bundle) {
    if (const auto reader = initWithPath(path)) {
        reader->setBundle(bundle);
        return reader->tagDescription();
    }
    return (bundle ? *bundle : NSBundle::mainBundle()).localizedString(noInformation, u"", u"ExifTag");
}

TagDictionaryPointer ExifTagReader::tagDictionaryWithPath(const NSString& path) {
    const auto reader = initWithPath(path);
    return reader ? reader->tagDictionary() : std::make_shared<const TagDictionary>();
}

} // namespace kestrine
