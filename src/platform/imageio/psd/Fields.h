// Reads numbers of PSD files, which have the highest byte first.
#pragma once

#include "platform/host/BigEndian.h"
#include "platform/host/FourCC.h"
#include "platform/imageio/ForwardReader.h"

#include <array>
#include <optional>

namespace kestrine::psd {

/// The next number of `size` bytes (at most 8); nullopt if the input ends before its last byte.
inline std::optional<std::uint64_t> readNumber(ForwardReader& input, std::size_t size) {
    std::array<std::uint8_t, 8> bytes{};
    const auto used = std::span(bytes).first(size);
    if (input.read(used) != size)
        return std::nullopt;
    return bigEndian(used);
}

} // namespace kestrine::psd
