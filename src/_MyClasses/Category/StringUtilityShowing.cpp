#include "_MyClasses/Category/StringUtility.h"
#include "_MyClasses/Category/StringUtilityTexts.h"
#include "platform/foundation/text/NSParagraphStyle.h"
#include "platform/foundation/text/TextCollation.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>

namespace kestrine::StringUtility {

namespace {

constexpr std::size_t searchedLength = 200; // in code units, before the maximum length

struct Unit {
    double bytes;
    const char* name;
};

constexpr Unit units[] = {
    {1099511627776.0, "TB"},
    {1073741824.0, "GB"},
    {1048576.0, "MB"},
    {1024.0, "KB"},
};

/// The same output as printf with "%.0f" and "%.1f", independent of the locale.
std::string fixed(double value, int digits) {
    std::array<char, std::numeric_limits<double>::max_exponent10 + 8> text;
    const auto [end, error] =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, digits);
    return std::string(text.data(), end);
}

} // namespace

NSString stringWithByteSize(const NSNumber& byteCount) {
    double value = byteCount.doubleValue();
    const char* name = "B";
    const auto unit = std::find_if(std::begin(units), std::end(units),
                                   [=](const Unit& candidate) { return value > candidate.bytes; });
    if (unit != std::end(units)) {
        value *= 1 / unit->bytes;
        name = unit->name;
    }
    return NSString::fromUTF8(fixed(value, value < 10 ? 1 : 0) + name);
}

int naturalCompare(const NSString& receiver, const NSString& other) {
    return naturalOrder(receiver.utf16(), other.utf16());
}

NSAttributedString lineBreakedString(const NSString& receiver, int lineBreakMode) {
    NSAttributedString result(receiver);
    result.addAttribute(NSParagraphStyleAttributeName, std::make_shared<NSParagraphStyle>(lineBreakMode),
                        {0, receiver.length()});
    return result;
}

std::size_t dividePointUpToLength(const NSString& receiver, std::size_t maximum, NSBundle& bundle) {
    if (receiver.length() <= maximum)
        return receiver.length();
    const std::size_t start = maximum - std::min(maximum, searchedLength);
    const std::u16string_view stretch = std::u16string_view(receiver.utf16()).substr(start, maximum - start);
    const NSString touten = localizedText(bundle, u"Touten Character");
    for (const NSString& candidate : {NSString(u"\n"), NSString(u"."), touten}) {
        const std::size_t hit =
            candidate.length() == 1 ? stretch.rfind(candidate[0]) : std::u16string_view::npos;
        if (hit != std::u16string_view::npos)
            return start + hit + 1;
    }
    return maximum;
}

} // namespace kestrine::StringUtility
