#include "platform/coregraphics/CurveTag.h"

#include "platform/coregraphics/ProfileBytes.h"

#include <algorithm>
#include <string_view>

namespace kestrine {

namespace {

constexpr std::size_t contentOffset = 8; // after the type signature and four reserved bytes

bool hasType(ByteView tag, std::string_view type) {
    return tag.size() >= contentOffset + 4 && std::equal(type.begin(), type.end(), tag.begin());
}

/// Reads the number of samples and the samples. No samples stand for the identity, and a single one is an
/// exponent in 256ths.
std::optional<CurveTag> parseSamples(ByteView tag) {
    const std::size_t count = bigEndian32(tag, contentOffset);
    const ByteView content = tag.subspan(contentOffset + 4);
    if (count > content.size() / 2)
        return std::nullopt;
    if (count == 0)
        return ToneCurve::Formula{};
    if (count == 1)
        return ToneCurve::Formula{.exponent = bigEndian16(content, 0) / 256.0};
    std::vector<std::uint16_t> samples(count);
    for (std::size_t i = 0; i < count; ++i)
        samples[i] = bigEndian16(content, 2 * i);
    return samples;
}

/// Reads the number of the formula and its parameters, which are signed and in 65536ths.
std::optional<CurveTag> parseFormula(ByteView tag) {
    constexpr std::array<std::size_t, 5> parameterCounts = {1, 3, 4, 5, 7};
    const std::size_t function = bigEndian16(tag, contentOffset);
    const ByteView content = tag.subspan(contentOffset + 4);
    if (function >= parameterCounts.size() || content.size() < 4 * parameterCounts[function])
        return std::nullopt;
    std::array<double, 7> parameters{};
    for (std::size_t i = 0; i < parameterCounts[function]; ++i)
        parameters[i] = static_cast<std::int32_t>(bigEndian32(content, 4 * i)) / 65536.0;
    const auto [g, a, b, c, d, e, f] = parameters;
    const double whereZero = -b / a;
    const ToneCurve::Formula formulas[] = {
        {.exponent = g},
        {.exponent = g, .scale = a, .offset = b, .start = whereZero},
        {.exponent = g, .scale = a, .offset = b, .lift = c, .start = whereZero, .toe = c},
        {.exponent = g, .scale = a, .offset = b, .start = d, .slope = c},
        {.exponent = g, .scale = a, .offset = b, .lift = e, .start = d, .slope = c, .toe = f},
    };
    return formulas[function];
}

} // namespace

std::optional<CurveTag> parseCurveTag(ByteView tag) {
    if (hasType(tag, "curv"))
        return parseSamples(tag);
    return hasType(tag, "para") ? parseFormula(tag) : std::nullopt;
}

} // namespace kestrine
