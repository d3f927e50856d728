#include "_MyClasses/Class/ExifTag/NumberText.h"

#include "platform/foundation/text/FormatText.h"

#include <algorithm>
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdio>

namespace kestrine {

namespace {

constexpr int maxColumns = 4096;

/// The parts of a conversion: %[flags][width][.precision][length]letter.
struct Conversion {
    std::size_t start = 0; ///< of the percent sign
    std::size_t end = 0;   ///< after the letter
    std::string flags{};
    int width = 0;
    int precision = -1; ///< negative for none
    char letter = 0;
};

/// The characters from `at` on that are in `accepted`; moves `at` after them.
std::string_view taken(std::string_view format, std::size_t& at, std::string_view accepted) {
    const std::size_t start = at;
    at = std::min(format.find_first_not_of(accepted, at), format.size());
    return format.substr(start, at - start);
}

int columns(std::string_view digits) {
    int number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return error == std::errc::result_out_of_range ? maxColumns : std::min(number, maxColumns);
}

Conversion conversionAt(std::string_view format, std::size_t start) {
    Conversion conversion{.start = start};
    std::size_t at = start + 1;
    conversion.flags = taken(format, at, "-+ #0");
    conversion.width = columns(taken(format, at, "0123456789"));
    if (at < format.size() && format[at] == '.')
        conversion.precision = columns(taken(format, ++at, "0123456789"));
    taken(format, at, "hlLqjzt");
    conversion.letter = at < format.size() ? format[at] : '\0';
    conversion.end = std::min(at + 1, format.size());
    return conversion;
}

/// Converts in the C locale. The conversion's letter must fit the type of `value`.
template <class Number>
std::string converted(const Conversion& conversion, Number value) {
    static const locale_t plain = ::newlocale(LC_ALL_MASK, "C", nullptr);
    const std::string format = "%" + conversion.flags + "*.*" + conversion.letter;
    // A double has at most 309 digits before its point.
    std::string text(static_cast<std::size_t>(2 * maxColumns + 400), '\0');
    const locale_t before = ::uselocale(plain);
    const int length = std::snprintf(text.data(), text.size(), format.c_str(), conversion.width,
                                     conversion.precision, value);
    ::uselocale(before);
    text.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
    return text;
}

template <class Number>
NSString formatted(const NSString& formatText, std::string_view letters, Number value) {
    const std::string format = formatText.utf8();
    for (std::size_t at = format.find('%'); at != std::string::npos; at = format.find('%', at)) {
        const Conversion conversion = conversionAt(format, at);
        if (conversion.letter != 0 && letters.find(conversion.letter) != std::string_view::npos)
            return NSString::fromUTF8(expandedFormatText(format.substr(0, at)) + converted(conversion, value)
                                      + expandedFormatText(format.substr(conversion.end)));
        at = conversion.end;
    }
    return NSString::fromUTF8(expandedFormatText(format));
}

} // namespace

NSString formattedNumber(const NSString& format, double value) {
    return formatted(format, "aAeEfFgG", std::isnan(value) ? std::fabs(value) : value);
}

NSString formattedNumber(const NSString& format, std::int32_t value) {
    return formatted(format, "di", value);
}

} // namespace kestrine
