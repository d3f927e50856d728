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

/// A converted field. Padding zeros are inserted between the prefix and the digits.
struct Field {
    std::string_view sign;   ///< or any other text that has no digits after it
    std::string_view base;   ///< "0x"
    std::string_view start;  ///< "0." or "0"
    std::size_t zeros = 0;   ///< after the start
    std::string_view ending; ///< "e+00"
    bool takesZeros = false;

    std::size_t length() const { return sign.size() + base.size() + start.size() + zeros + ending.size(); }
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
Field absentPointer(const Conversion&) { return {.sign = "(nil)"}; }
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

std::string_view signOf(const Conversion& conversion) {
    return conversion.signAlways ? "+" : conversion.signOrSpace ? " " : "";
}

bool isUpperCase(char letter) { return letter >= 'A' && letter <= 'Z'; }

/// Zero with `precision` digits. A precision of 0 gives no digit.
Field unsignedInteger(const Conversion& conversion) {
    return {.zeros = conversion.precision.value_or(1), .takesZeros = !conversion.precision};
}

Field signedInteger(const Conversion& conversion) {
    Field field = unsignedInteger(conversion);
    field.sign = signOf(conversion);
    return field;
}

Field octalInteger(const Conversion& conversion) {
    Field field = unsignedInteger(conversion);
    if (conversion.alternateForm && field.zeros == 0)
        field.zeros = 1;
    return field;
}

/// "0" with a fraction of `digits` zeros. `alwaysPoint` adds the point even without a fraction.
Field zeroWithFraction(const Conversion& conversion, std::size_t digits, bool alwaysPoint) {
    return {.sign = signOf(conversion),
            .start = digits > 0 || alwaysPoint ? "0." : "0",
            .zeros = digits,
            .takesZeros = true};
}

Field fixedNumber(const Conversion& conversion) {
    return zeroWithFraction(conversion, conversion.precision.value_or(6), conversion.alternateForm);
}

Field exponentNumber(const Conversion& conversion) {
    Field field = fixedNumber(conversion);
    field.ending = isUpperCase(conversion.letter) ? "E+00" : "e+00";
    return field;
}

/// Removes the fraction, except in the alternate form, in which the precision is the number of all digits.
Field generalNumber(const Conversion& conversion) {
    const std::size_t digits = std::max<std::size_t>(conversion.precision.value_or(6), 1);
    const bool alternate = conversion.alternateForm;
    return zeroWithFraction(conversion, alternate ? digits - 1 : 0, alternate);
}

Field hexadecimalNumber(const Conversion& conversion) {
    const bool upper = isUpperCase(conversion.letter);
    Field field = zeroWithFraction(conversion, conversion.precision.value_or(0), conversion.alternateForm);
    field.base = upper ? "0X" : "0x";
    field.ending = upper ? "P+0" : "p+0";
    return field;
}

/// "(null)" is never shortened: a smaller precision gives an empty string.
Field absentText(const Conversion& conversion) {
    constexpr std::string_view shown = "(null)";
    return {.sign = conversion.precision.value_or(shown.size()) < shown.size() ? "" : shown};
}

/// Passes the output on and counts it.
class CountedOutput {
public:
    explicit CountedOutput(const FormatTextOutput& output) : output_(output) {}

    std::size_t count() const { return count_; }

    void add(std::string_view bytes) {
        if (!bytes.empty())
            output_(bytes);
        count_ += bytes.size();
    }

    void repeat(std::string_view block, std::size_t count) {
        for (; count > block.size(); count -= block.size())
            add(block);
        add(block.substr(0, count));
    }

private:
    const FormatTextOutput& output_;
    std::size_t count_ = 0;
};

constexpr std::string_view zeros = "00000000000000000000000000000000";
constexpr std::string_view spaces = "                                ";

void addPadded(const Field& field, const Conversion& conversion, CountedOutput& output) {
    const std::size_t length = field.length();
    const std::size_t missing = conversion.width > length ? conversion.width - length : 0;
    const bool padsWithZeros = conversion.zeroPadded && field.takesZeros;
    if (!conversion.leftAligned && !padsWithZeros)
        output.repeat(spaces, missing);
    output.add(field.sign);
    output.add(field.base);
    if (!conversion.leftAligned && padsWithZeros)
        output.repeat(zeros, missing);
    output.add(field.start);
    output.repeat(zeros, field.zeros);
    output.add(field.ending);
    if (conversion.leftAligned)
        output.repeat(spaces, missing);
}

/// Returns whether the letter is known.
bool addConverted(Conversion conversion, CountedOutput& output) {
    if (conversion.letter == '%')
        return output.add("%"), true;
    if (conversion.letter == 'n')
        return true;
    // "%c" prints a zero character, which counts for the width but is not visible.
    if ((conversion.letter == 'c' || conversion.letter == 'C') && conversion.width > 0)
        conversion.width--;
    for (const ConversionRow& row : conversions)
        if (row.letters.find(conversion.letter) != std::string_view::npos)
            return addPadded(row.convert(conversion), conversion, output), true;
    return false;
}

} // namespace

void expandFormatText(std::string_view bytes, const FormatTextOutput& text) {
    bytes = bytes.substr(0, bytes.find('\0'));
    CountedOutput output(text);
    for (std::size_t i = 0; i < bytes.size();) {
        const std::size_t percent = std::min(bytes.find('%', i), bytes.size());
        output.add(bytes.substr(i, percent - i));
        if (percent == bytes.size())
            return;
        ConversionReader reader(bytes.substr(percent + 1));
        std::optional<Conversion> conversion = reader.read();
        if (!conversion)
            return;
        if (output.count() > bytes.size() + maxGrowth) {
            conversion->width = 0;
            conversion->precision.reset();
        }
        i = percent + 1 + reader.bytesRead();
        if (!addConverted(*conversion, output))
            output.add(bytes.substr(percent, i - percent));
    }
}

std::string expandedFormatText(std::string_view bytes) {
    std::string text;
    expandFormatText(bytes, [&text](std::string_view piece) { text += piece; });
    return text;
}

} // namespace kestrine
