#include "platform/imageio/pnm/Header.h"

#include <charconv>
#include <optional>
#include <string>
#include <string_view>

namespace kestrine::pnm {

namespace {

struct Variant {
    char digit; ///< after the P
    Samples samples;
    ColorModel model;
};

constexpr std::array<Variant, 6> variants = {{
    {'1', Samples::textBits, ColorModel::gray},
    {'2', Samples::text, ColorModel::gray},
    {'3', Samples::text, ColorModel::rgb},
    {'4', Samples::bits, ColorModel::gray},
    {'5', Samples::bytes, ColorModel::gray},
    {'6', Samples::bytes, ColorModel::rgb},
}};

struct TupleType {
    std::string_view name;
    std::uint32_t depth;
    ColorModel model;
    bool hasAlpha;
};

/// A map without a type has the first type of its depth.
constexpr std::array<TupleType, 6> tupleTypes = {{
    {"GRAYSCALE", 1, ColorModel::gray, false},
    {"GRAYSCALE_ALPHA", 2, ColorModel::gray, true},
    {"RGB", 3, ColorModel::rgb, false},
    {"RGB_ALPHA", 4, ColorModel::rgb, true},
    {"BLACKANDWHITE", 1, ColorModel::gray, false},
    {"BLACKANDWHITE_ALPHA", 2, ColorModel::gray, true},
}};

constexpr std::uint32_t largestPossible = 65535;

/// The longest line of a header, except for comments.
constexpr std::size_t maximumLine = 255;

bool isSpace(int character) { return character == ' ' || (character >= '\t' && character <= '\r'); }
bool isDigit(int character) { return character >= '0' && character <= '9'; }

Failure brokenHeader() { return {Reason::malformed, "the header of the portable map is invalid"}; }
Failure endedInHeader() { return {Reason::truncated, "the portable map ends too early"}; }

void skipComment(ForwardReader& input) {
    for (int character = input.next(); character >= 0 && character != '\n';)
        character = input.next();
}

SampleDepth depthFor(std::uint32_t largest) {
    return largest > 255 ? SampleDepth::bits16 : SampleDepth::bits8;
}

Result<Header> readNumbers(ForwardReader& input, const Variant& variant) {
    const bool hasLargest = variant.samples == Samples::text || variant.samples == Samples::bytes;
    std::array<std::uint32_t, 3> numbers = {0, 0, 1}; // width, height, largest
    for (std::size_t i = 0; i < (hasLargest ? 3u : 2u); ++i)
        numbers[i] = TRY(readNumber(input));
    const auto [width, height, largest] = numbers;
    if (largest < 1 || largest > largestPossible)
        return brokenHeader();
    return Header{variant.samples, {width, height, variant.model, false, depthFor(largest)}, largest};
}

/// The scale after the sides is negative if the lowest byte of a sample comes first; other programs ignore
/// how large it is.
Result<Header> readFloatHeader(ForwardReader& input, ColorModel model) {
    const std::uint32_t width = TRY(readNumber(input));
    const std::uint32_t height = TRY(readNumber(input));
    std::string scale;
    for (int character = nextCharacter(input); !isSpace(character); character = input.next()) {
        if (character < 0 || scale.size() == maximumLine)
            return endedInHeader();
        scale.push_back(static_cast<char>(character));
    }
    constexpr std::string_view numerals = "+-.0123456789eE";
    if (scale.empty() || scale.find_first_not_of(numerals) != std::string::npos)
        return brokenHeader();
    Header header{Samples::floats, {width, height, model, false, SampleDepth::bits16}, 1};
    header.hasLowByteFirst = scale.front() == '-';
    return header;
}

/// The next line; nullopt if it is too long or the input ends. A comment counts as an empty line.
std::optional<std::string> readLine(ForwardReader& input) {
    std::string line;
    for (int character = input.next(); character != '\n'; character = input.next()) {
        if (character == '#' && line.empty()) {
            skipComment(input);
            return line;
        }
        if (character < 0 || line.size() == maximumLine)
            return std::nullopt;
        line += static_cast<char>(character);
    }
    return line;
}

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && isSpace(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isSpace(text.back()))
        text.remove_suffix(1);
    return text;
}

/// The fields in the header of an arbitrary map. Missing and invalid numbers are 0.
struct MapLines {
    std::uint32_t width = 0, height = 0, depth = 0, largest = 0;
    std::string tupleType;

    /// Stores the field of a line; returns false when it is unknown.
    bool take(std::string_view line) {
        const std::size_t end = std::min(line.find_first_of(" \t"), line.size());
        const std::string_view key = line.substr(0, end), value = trimmed(line.substr(end));
        std::uint32_t* const number = key == "WIDTH"    ? &width
                                      : key == "HEIGHT" ? &height
                                      : key == "DEPTH"  ? &depth
                                      : key == "MAXVAL" ? &largest
                                                        : nullptr;
        if (number)
            std::from_chars(value.data(), value.data() + value.size(), *number);
        else if (key == "TUPLTYPE")
            tupleType = value;
        return number || key == "TUPLTYPE" || line.empty();
    }
};

Result<Header> headerOf(const MapLines& lines) {
    if (lines.largest < 1 || lines.largest > largestPossible)
        return brokenHeader();
    for (const TupleType& type : tupleTypes) {
        if (type.depth != lines.depth || (!lines.tupleType.empty() && lines.tupleType != type.name))
            continue;
        const RowFormat format = {lines.width, lines.height, type.model, type.hasAlpha,
                                  depthFor(lines.largest)};
        return Header{Samples::bytes, format, lines.largest};
    }
    return Failure{Reason::unsupported, "the arbitrary map has an unknown type"};
}

Result<Header> readMapHeader(ForwardReader& input) {
    MapLines lines;
    for (;;) {
        const std::optional<std::string> line = readLine(input);
        if (!line)
            return brokenHeader();
        if (trimmed(*line) == "ENDHDR")
            return headerOf(lines);
        if (!lines.take(trimmed(*line)))
            return brokenHeader();
    }
}

} // namespace

bool isPNM(ByteView head) {
    if (head.size() < 3 || head[0] != 'P')
        return false;
    if (head[1] == '7')
        return head[2] == '\n';
    const bool isKnown = (head[1] >= '1' && head[1] <= '6') || head[1] == 'F' || head[1] == 'f';
    return isKnown && (isSpace(head[2]) || head[2] == '#');
}

Result<Header> readHeader(ForwardReader& input) {
    input.next(); // P
    const int digit = input.next();
    for (const Variant& variant : variants)
        if (digit == variant.digit)
            return readNumbers(input, variant);
    if (digit == 'F' || digit == 'f')
        return readFloatHeader(input, digit == 'F' ? ColorModel::rgb : ColorModel::gray);
    input.next(); // the end of the line
    return readMapHeader(input);
}

Result<std::uint32_t> readNumber(ForwardReader& input) {
    int character = nextCharacter(input);
    if (character < 0)
        return endedInHeader();
    if (!isDigit(character))
        return Failure{Reason::malformed, "the portable map contains something other than a number"};
    std::uint64_t number = 0;
    for (; isDigit(character); character = input.next()) {
        number = 10 * number + static_cast<std::uint64_t>(character - '0');
        if (number > 0xFFFF'FFFF)
            return Failure{Reason::tooLarge, "a number in the portable map is too large"};
    }
    if (character == '#')
        skipComment(input);
    return static_cast<std::uint32_t>(number);
}

int nextCharacter(ForwardReader& input) {
    int character = input.next();
    while (isSpace(character) || character == '#') {
        if (character == '#')
            skipComment(input);
        character = input.next();
    }
    return character;
}

} // namespace kestrine::pnm
