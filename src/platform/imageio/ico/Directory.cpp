#include "platform/imageio/ico/Directory.h"

#include "platform/host/BigEndian.h"
#include "platform/host/LittleEndian.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <tuple>

namespace kestrine::ico {

namespace {

constexpr std::size_t headerLength = 6, entryLength = 16;

std::uint32_t u16(ByteView bytes, std::size_t at) {
    return static_cast<std::uint32_t>(littleEndian(bytes.subspan(at, 2)));
}
std::uint32_t u32(ByteView bytes, std::size_t at) {
    return static_cast<std::uint32_t>(littleEndian(bytes.subspan(at, 4)));
}

/// Reads the size from the beginning of a PNG file.
void describePNG(ByteView head, Entry& entry) {
    constexpr std::size_t width = 16, height = 20, depth = 24;
    entry.isPNG = true;
    entry.pixels = bigEndian(head.subspan(width, 4)) * bigEndian(head.subspan(height, 4));
    entry.bits = 4u * head[depth];
}

/// Reads the size from the header of a BMP, whose height is that of the colours and of the mask together.
void describeBMP(ByteView head, Entry& entry) {
    constexpr std::uint32_t coreHeader = 12;
    if (u32(head, 0) == coreHeader) {
        entry.pixels = std::uint64_t{u16(head, 4)} * u16(head, 6) / 2;
        entry.bits = u16(head, 10);
    } else {
        const std::int64_t height =
            static_cast<std::int32_t>(u32(head, 8)); // negative if the upper row is first
        entry.pixels = std::uint64_t{u32(head, 4)} * static_cast<std::uint64_t>(std::abs(height)) / 2;
        entry.bits = u16(head, 14);
    }
}

Entry entryFrom(ByteView stored, const ByteReader& reader) {
    constexpr std::uint64_t pngSignature = 0x89504E470D0A1A0A;
    const auto side = [&](std::size_t at) { return stored[at] == 0 ? 256u : stored[at]; };
    Entry entry{
        .offset = u32(stored, 12), .length = u32(stored, 8), .pixels = side(0) * std::uint64_t{side(1)}};
    std::array<std::uint8_t, 32> head{};
    if (reader.readAt(entry.offset, head) != head.size())
        return entry;
    if (bigEndian(ByteView(head).first(8)) == pngSignature)
        describePNG(head, entry);
    else
        describeBMP(head, entry);
    return entry;
}

} // namespace

bool isIcon(ByteView head) {
    if (head.size() < headerLength + entryLength || head[0] != 0 || head[1] != 0 || head[2] < 1 || head[2] > 2
        || head[3] != 0)
        return false;
    constexpr std::uint32_t shortestPicture = 12;
    const std::size_t entries = u16(head, 4);
    const ByteView first = head.subspan(headerLength);
    return entries > 0 && u32(first, 8) > shortestPicture
           && u32(first, 12) >= headerLength + entryLength * entries;
}

Result<Entry> largestEntry(const ByteReader& reader) {
    std::array<std::uint8_t, headerLength> header{};
    reader.readAt(0, header);
    Bytes stored(entryLength * u16(header, 4));
    if (stored.empty() || reader.readAt(headerLength, stored) != stored.size())
        return Failure{Reason::truncated, "the icon ends in its directory"};
    Entry largest = entryFrom(ByteView(stored).first(entryLength), reader);
    for (std::size_t at = entryLength; at < stored.size(); at += entryLength) {
        const Entry entry = entryFrom(ByteView(stored).subspan(at, entryLength), reader);
        if (std::tie(entry.pixels, entry.bits) > std::tie(largest.pixels, largest.bits))
            largest = entry;
    }
    return largest;
}

} // namespace kestrine::ico
