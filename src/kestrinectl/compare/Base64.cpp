#include "kestrinectl/compare/Base64.h"

#include <algorithm>

namespace kestrine {

namespace {

constexpr char base64Digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

} // namespace

std::string base64(ByteView bytes) {
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t count = std::min<std::size_t>(3, bytes.size() - i);
        std::uint32_t group = 0;
        for (std::size_t k = 0; k < 3; ++k)
            group = group << 8 | (k < count ? bytes[i + k] : 0U);
        for (std::size_t digit = 0; digit < 4; ++digit)
            text += digit <= count ? base64Digits[group >> (18 - 6 * digit) & 63] : '=';
    }
    return text;
}

} // namespace kestrine
