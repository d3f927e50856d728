#include "platform/foundation/text/FormatText.h"

#include <algorithm>
#include <array>
#include <optional>

namespace kestrine {

namespace {

constexpr std::size_t maxField = 4096;
constexpr std::size_t maxGrowth = 1 << 20;

constexpr std::string_view flagLetters = "-+ #0'I";
/// Longer modifiers first, so that the first match is the correct one.
constexpr std::array<std::string_view, 10> lengthModifiers{"hh", "ll", "h", "l", "L",
                                                           "q",  "j",  "z", "Z", "t"};

struct Conversion {
    bool leftAligned = false;
    bool signAlways = false;
    bool signOrSpace = false;
    bool alternateForm = false;
    bool zeroPadded = false;
    std::size_t width = 0;
    std::optional<std::size_t> precision;
    char letter = 0;
};

/// A converted field. Padding zeros are inserted between the prefix (sign, "0x") and the body.
struct Field {
    std::string prefix;
    std::string body;
    bool takesZeros = false;
};

/// Parses one conversion.
class ConversionReader {
public:
    explicit ConversionReader(std::string_view rest) : rest_(rest) {}

    /// Reads from after the '%' to the conversion letter. Empty if the text ends before the letter.
    std::optional<Conversion> read() {
        Conversion conversion;
        skipPosition();
        readFlags(conversion);
        conversion.width = readCount().value_or(0);
        if (take('.'))
            conversion.precision = readCount().value_or(0);
        skipLengthModifier();
        if (atEnd())
            return std::nullopt;
        conversion.letter = rest_[position_++];
        return conversion;
    }

    std::size_t bytesRead() const { return position_; }

private:
    bool atEnd() const { return position_ == rest_.size(); }
    bool isDigit() const { return !atEnd() && rest_[position_] >= '0' && rest_[position_] <= '9'; }

    bool take(char expected) {
        if (atEnd() || rest_[position_] != expected)
            return false;
        position_++;
        return true;
    }

    std::size_t readDigits() {
        std::size_t number = 0;
        for (; isDigit(); position_++)
            number = std::min(maxField, number * 10 + static_cast<std::size_t>(rest_[position_] - '0'));
        return number;
    }

    /// "n$", the number of the argument. It has no effect, because all arguments are zero.
    void skipPosition() {
        const std::size_t start = position_;
        if (readDigits() == 0 || !take('$'))
            position_ = start;
    }

    void readFlags(Conversion& conversion) {
        while (!atEnd() && flagLetters.find(rest_[position_]) != std::string_view::npos) {
            const char flag = rest_[position_++];
            conversion.leftAligned |= flag == '-';
            conversion.signAlways |= flag == '+';
            conversion.signOrSpace |= flag == ' ';
            conversion.alternateForm |= flag == '#';
            conversion.zeroPadded |= flag == '0';
        }
    }

    /// A width or a precision: digits, or '*' for an argument, which counts as zero.
    std::optional<std::size_t> readCount() {
        if (take('*')) {
            skipPosition();
            return 0;
        }
        if (!isDigit())
            return std::nullopt;
        return readDigits();
    }

    void skipLengthModifier() {
        for (const std::string_view modifier : lengthModifiers)
            if (rest_.substr(position_).starts_with(modifier)) {
                position_ += modifier.size();
                return;
            }
    }

    std::string_view rest_;
    std::size_t position_ = 0;
};

Field signedInteger(const Conversion& conversion);
Field unsignedInteger(const Conversion& conversion);
Field octalInteger(const Conversion& conversion);
Field exponentNumber(const Conversion& conversion);
Field fixedNumber(const Conversion& conversion);
Field generalNumber(const Conversion& conversion);
Field hexadecimalNumber(const Conversion& conversion);
Field absentText(const Conversion& conversion);
Field absentPointer(const Conversion&) { return {"", "(nil)"}; }
Field noText(const Conversion&) { return {}; }

struct ConversionRow {
    std::string_view letters;
    Field (*convert)(const Conversion&);
};
constexpr std::array<ConversionRow, 11> conversions{{
    {"di", signedInteger},
    {"uxX", unsignedInteger},
    {"o", octalInteger},
    {"eE", exponentNumber},
    {"fF", fixedNumber},
    {"gG", generalNumber},
    {"aA", hexadecimalNumber},
    {"sS", absentText},
    {"p", absentPointer},
    {"m", noText},
    {"cC", noText},
}};

std::string signOf(const Conversion& conversion) {
    return conversion.signAlways ? "+" : conversion.signOrSpace ? " " : "";
}

bool isUpperCase(char letter) { return letter >= 'A' && letter <= 'Z'; }

/// Zero with `precision` digits. A precision of 0 gives no digit.
Field unsignedInteger(const Conversion& conversion) {
    return {"", std::string(conversion.precision.value_or(1), '0'), !conversion.precision};
}

Field signedInteger(const Conversion& conversion) {
    Field field = unsignedInteger(conversion);
    field.prefix = signOf(conversion);
    return field;
}

Field octalInteger(const Conversion& conversion) {
    Field field = unsignedInteger(conversion);
    if (conversion.alternateForm && field.body.empty())
        field.body = "0";
    return field;
}

/// "0" with a fraction of `digits` zeros. `alwaysPoint` adds the point even without a fraction.
std::string zeroWithFraction(std::size_t digits, bool alwaysPoint) {
    return (digits > 0 || alwaysPoint ? "0." : "0") + std::string(digits, '0');
}

Field fixedNumber(const Conversion& conversion) {
    return {signOf(conversion), zeroWithFraction(conversion.precision.value_or(6), conversion.alternateForm),
            true};
}

Field exponentNumber(const Conversion& conversion) {
    Field field = fixedNumber(conversion);
    field.body += isUpperCase(conversion.letter) ? "E+00" : "e+00";
    return field;
}

/// Removes the fraction, except in the alternate form, in which the precision is the number of all digits.
Field generalNumber(const Conversion& conversion) {
    const std::size_t digits = std::max<std::size_t>(conversion.precision.value_or(6), 1);
    const bool alternate = conversion.alternateForm;
    return {signOf(conversion), zeroWithFraction(alternate ? digits - 1 : 0, alternate), true};
}

Field hexadecimalNumber(const Conversion& conversion) {
    const bool upper = isUpperCase(conversion.letter);
    return {signOf(conversion) + (upper ? "0X" : "0x"),
            zeroWithFraction(conversion.precision.value_or(0), conversion.alternateForm)
                + (upper ? "P+0" : "p+0"),
            true};
}

/// "(null)" is never shortened: a smaller precision gives an empty string.
Field absentText(const Conversion& conversion) {
    constexpr std::string_view shown = "(null)";
    return {"", conversion.precision.value_or(shown.size()) < shown.size() ? "" : std::string(shown)};
}

std::string padded(const Field& field, const Conversion& conversion) {
    const std::size_t length = field.prefix.size() + field.body.size();
    const std::size_t missing = conversion.width > length ? conversion.width - length : 0;
    if (conversion.leftAligned)
        return field.prefix + field.body + std::string(missing, ' ');
    if (conversion.zeroPadded && field.takesZeros)
        return field.prefix + std::string(missing, '0') + field.body;
    return std::string(missing, ' ') + field.prefix + field.body;
}

/// The output of a conversion. Empty if the letter is unknown.
std::optional<std::string> shown(Conversion conversion) {
    if (conversion.letter == '%')
        return "%";
    if (conversion.letter == 'n')
        return "";
    // "%c" prints a zero character, which counts for the width but is not visible.
    if ((conversion.letter == 'c' || conversion.letter == 'C') && conversion.width > 0)
        conversion.width--;
    for (const ConversionRow& row : conversions)
        if (row.letters.find(conversion.letter) != std::string_view::npos)
            return padded(row.convert(conversion), conversion);
    return std::nullopt;
}

} // namespace

std::string expandedFormatText(std::string_view bytes) {
    bytes = bytes.substr(0, bytes.find('\0'));
    std::string text;
    for (std::size_t i = 0; i < bytes.size();) {
        const std::size_t percent = std::min(bytes.find('%', i), bytes.size());
        text += bytes.substr(i, percent - i);
        if (percent == bytes.size())
            break;
        ConversionReader reader(bytes.substr(percent + 1));
        std::optional<Conversion> conversion = reader.read();
        if (!conversion)
            break;
        if (text.size() > bytes.size() + maxGrowth) {
            conversion->width = 0;
            conversion->precision.reset();
        }
        i = percent + 1 + reader.bytesRead();
        text += shown(*conversion).value_or(std::string(bytes.substr(percent, i - percent)));
    }
    return text;
}

} // namespace kestrine
