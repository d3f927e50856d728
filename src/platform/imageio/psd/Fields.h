// Reads numbers of PSD files, which have the highest byte first.
#pragma once

#include "platform/host/BigEndian.h"
#include "platform/imageio/ForwardReader.h"

#include <array>
#include <optional>

namespace kestrine::psd {

/// Four characters as a number.
constexpr std::uint32_t signature(const char (&text)[5]) {
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < 4; ++i)
        number = number << 8 | static_cast<std::uint8_t>(text[i]);
    return number;
}

/// The next number of `size` bytes (at most 8); nullopt if the input ends before its last byte.
inline std::optional<std::uint64_t> readNumber(ForwardReader& input, std::size_t size) {
    std::array<std::uint8_t, 8> bytes{};
    const auto used = std::span(bytes).first(size);
    if (input.read(used) != size)
        return std::nullopt;
    return bigEndian(used);
}

} // namespace kestrine::psd
