#include "platform/finder/FinderInfo.h"

#include <algorithm>

namespace kestrine {
namespace {

constexpr std::size_t extendedStart = 16;

} // namespace

std::array<std::uint8_t, 32> bytesOf(const FinderInfo& information) {
    std::array<std::uint8_t, 32> bytes{};
    auto* next = bytes.data();
    const auto put = [&next](std::uint32_t value, int size) {
        for (int shift = 8 * (size - 1); shift >= 0; shift -= 8)
            *next++ = static_cast<std::uint8_t>(value >> shift);
    };
    put(information.type, 4);
    put(information.creator, 4);
    put(information.flags, 2);
    put(static_cast<std::uint16_t>(information.location.vertical), 2);
    put(static_cast<std::uint16_t>(information.location.horizontal), 2);
    put(information.reserved, 2);
    std::ranges::copy(information.extended, next);
    return bytes;
}

FinderInfo finderInfoFromBytes(std::span<const std::uint8_t, 32> bytes) {
    const auto* next = bytes.data();
    const auto take = [&next](int size) {
        std::uint32_t value = 0;
        while (size-- > 0)
            value = value << 8 | *next++;
        return value;
    };
    FinderInfo information;
    information.type = take(4);
    information.creator = take(4);
    information.flags = static_cast<std::uint16_t>(take(2));
    information.location.vertical = static_cast<std::int16_t>(take(2));
    information.location.horizontal = static_cast<std::int16_t>(take(2));
    information.reserved = static_cast<std::uint16_t>(take(2));
    std::ranges::copy(bytes.subspan<extendedStart>(), information.extended.begin());
    return information;
}

} // namespace kestrine
