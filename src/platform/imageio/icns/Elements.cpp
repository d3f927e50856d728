#include "platform/imageio/icns/Elements.h"

#include "platform/host/BigEndian.h"

#include <algorithm>
#include <array>

namespace kestrine::icns {

namespace {

constexpr ElementType types[] = {
    {fourCC("ICON"), 32, 32, Kind::bits},           {fourCC("icm#"), 16, 12, Kind::bitsWithMask},
    {fourCC("ics#"), 16, 16, Kind::bitsWithMask},   {fourCC("ICN#"), 32, 32, Kind::bitsWithMask},
    {fourCC("ich#"), 48, 48, Kind::bitsWithMask},   {fourCC("icm4"), 16, 12, Kind::indices4},
    {fourCC("ics4"), 16, 16, Kind::indices4},       {fourCC("icl4"), 32, 32, Kind::indices4},
    {fourCC("ich4"), 48, 48, Kind::indices4},       {fourCC("icm8"), 16, 12, Kind::indices8},
    {fourCC("ics8"), 16, 16, Kind::indices8},       {fourCC("icl8"), 32, 32, Kind::indices8},
    {fourCC("ich8"), 48, 48, Kind::indices8},       {fourCC("is32"), 16, 16, Kind::colors},
    {fourCC("il32"), 32, 32, Kind::colors},         {fourCC("ih32"), 48, 48, Kind::colors},
    {fourCC("it32"), 128, 128, Kind::colorsAfter4}, {fourCC("s8mk"), 16, 16, Kind::mask},
    {fourCC("l8mk"), 32, 32, Kind::mask},           {fourCC("h8mk"), 48, 48, Kind::mask},
    {fourCC("t8mk"), 128, 128, Kind::mask},         {fourCC("icp4"), 16, 16, Kind::file},
    {fourCC("icp5"), 32, 32, Kind::file},           {fourCC("icp6"), 64, 64, Kind::file},
    {fourCC("ic04"), 16, 16, Kind::file},           {fourCC("ic05"), 32, 32, Kind::file},
    {fourCC("ic07"), 128, 128, Kind::file},         {fourCC("ic08"), 256, 256, Kind::file},
    {fourCC("ic09"), 512, 512, Kind::file},         {fourCC("ic10"), 1024, 1024, Kind::file},
    {fourCC("ic11"), 32, 32, Kind::file},           {fourCC("ic12"), 64, 64, Kind::file},
    {fourCC("ic13"), 256, 256, Kind::file},         {fourCC("ic14"), 512, 512, Kind::file},
    {fourCC("icsb"), 18, 18, Kind::file},           {fourCC("icsB"), 36, 36, Kind::file},
    {fourCC("sb24"), 24, 24, Kind::file},           {fourCC("SB24"), 48, 48, Kind::file},
};

} // namespace

std::vector<Element> readElements(const ByteReader& reader) {
    constexpr std::size_t headerLength = 8, maximumElements = 4096;
    std::vector<Element> elements;
    std::uint64_t offset = headerLength;
    for (std::size_t i = 0; i < maximumElements; ++i) {
        std::array<std::uint8_t, headerLength> header{};
        if (reader.readAt(offset, header) != header.size())
            break;
        const std::uint64_t name = bigEndian(ByteView(header).first(4)),
                            length = bigEndian(ByteView(header).last(4));
        if (length < headerLength)
            break;
        const auto* const type = std::ranges::find(types, name, &ElementType::name);
        if (type != std::end(types))
            elements.push_back({type, offset + headerLength, length - headerLength});
        offset += length;
    }
    return elements;
}

} // namespace kestrine::icns
