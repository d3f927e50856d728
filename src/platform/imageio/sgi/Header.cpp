#include "platform/imageio/sgi/Header.h"

#include "platform/host/BigEndian.h"

#include <array>

namespace kestrine::sgi {

namespace {

std::uint32_t u16(ByteView header, std::size_t at) {
    return static_cast<std::uint32_t>(bigEndian(header.subspan(at, 2)));
}

} // namespace

bool isSGI(ByteView head) {
    constexpr unsigned runLength = 1;
    return head.size() >= 12 && head[0] == 0x01 && head[1] == 0xDA && head[2] <= runLength
           && (head[3] == 1 || head[3] == 2) && head[4] == 0 && head[5] >= 1 && head[5] <= 3;
}

Result<Header> readHeader(const ByteReader& reader) {
    std::array<std::uint8_t, headerLength> header{};
    if (reader.readAt(0, header) != header.size())
        return Failure{Reason::truncated, "the SGI file ends in its header"};
    constexpr std::size_t colorMapKind = 104;
    if (bigEndian(ByteView(header).subspan(colorMapKind, 4)) != 0)
        return Failure{Reason::unsupported, "the SGI file holds a colour map or indices"};
    const unsigned dimensions = header[5];
    const std::uint32_t width = u16(header, 6), height = dimensions < 2 ? 1 : u16(header, 8),
                        channels = dimensions < 3 ? 1 : u16(header, 10);
    if (channels < 1 || channels > 4)
        return Failure{Reason::unsupported, "the SGI file has an unknown number of channels"};
    const RowFormat format = {width, height, channels < 3 ? ColorModel::gray : ColorModel::rgb,
                              channels % 2 == 0, header[3] == 2 ? SampleDepth::bits16 : SampleDepth::bits8};
    return Header{format, header[2] == 1};
}

} // namespace kestrine::sgi
