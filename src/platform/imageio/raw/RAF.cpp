#include "platform/host/BigEndian.h"
#include "platform/imageio/raw/Header.h"

#include <algorithm>
#include <array>

namespace kestrine::raw {

namespace {

constexpr std::uint64_t placesAt = 84;
constexpr std::uint32_t maxNumbers = 255;

std::uint32_t numberAt(const ByteReader& reader, std::uint64_t offset, std::size_t bytes) {
    std::array<std::uint8_t, 4> buffer{};
    const auto number = std::span(buffer).first(bytes);
    return reader.readAt(offset, number) == bytes ? static_cast<std::uint32_t>(bigEndian(number)) : 0;
}

/// The size of the picture, else that of the sensor with its margins.
std::optional<Sides> sensorIn(const ByteReader& reader, std::uint64_t offset) {
    constexpr std::uint32_t wholeSensor = 0x100, picture = 0x111;
    std::optional<Sides> found;
    const std::uint32_t count = std::min(numberAt(reader, offset, 4), maxNumbers);
    offset += 4;
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::uint32_t tag = numberAt(reader, offset, 2);
        if (tag == picture || (tag == wholeSensor && !found))
            found = Sides{numberAt(reader, offset + 6, 2), numberAt(reader, offset + 4, 2)};
        offset += 4 + numberAt(reader, offset + 2, 2);
    }
    return found;
}

} // namespace

Header readRAF(const ByteReader& reader) {
    Header header;
    header.previews.push_back({numberAt(reader, placesAt, 4), numberAt(reader, placesAt + 4, 4)});
    header.sensor = sensorIn(reader, numberAt(reader, placesAt + 8, 4));
    return header;
}

} // namespace kestrine::raw
