#include "_MyClasses/Class/ExifTag/ByteOrder.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>

namespace kestrine {

namespace {

template <class Unsigned>
Unsigned invert(void* bytes) {
    auto* first = static_cast<std::uint8_t*>(bytes);
    std::reverse(first, first + sizeof(Unsigned));
    Unsigned number;
    std::memcpy(&number, bytes, sizeof number);
    return number;
}

} // namespace

std::string keyForTag(std::uint16_t tag) {
    std::array<char, 5> key{};
    std::snprintf(key.data(), key.size(), "%04X", unsigned{tag});
    return key.data();
}

std::uint16_t invertByteOrder16(void* bytes) { return invert<std::uint16_t>(bytes); }
std::uint32_t invertByteOrder32(void* bytes) { return invert<std::uint32_t>(bytes); }
std::uint64_t invertByteOrder64(void* bytes) { return invert<std::uint64_t>(bytes); }

} // namespace kestrine
