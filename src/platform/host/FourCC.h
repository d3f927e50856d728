// FourCC: a name of four characters as a number, the first one in the highest byte.
#pragma once

#include <cstdint>

namespace kestrine {

using FourCC = std::uint32_t;

constexpr FourCC fourCC(const char (&name)[5]) {
    FourCC number = 0;
    for (int i = 0; i < 4; ++i)
        number = number << 8 | static_cast<std::uint8_t>(name[i]);
    return number;
}

} // namespace kestrine
