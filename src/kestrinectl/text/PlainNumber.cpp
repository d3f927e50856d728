#include "kestrinectl/text/PlainNumber.h"

#include <charconv>
#include <cmath>

namespace kestrine {

std::string plainNumber(float value) {
    const float size = std::fabs(value);
    const bool isPlain = size == 0 || (size >= 0.001F && size < 1e9F);
    char text[64];
    const auto format = isPlain ? std::chars_format::fixed : std::chars_format::general;
    return {text, std::to_chars(text, text + sizeof text, value, format).ptr};
}

} // namespace kestrine
