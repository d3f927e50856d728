#include "platform/imageio/icns/Elements.h"

#include "platform/host/BigEndian.h"

#include <algorithm>
#include <array>

namespace kestrine::icns {

namespace {

constexpr ElementType types[] = {
    {elementName("ICON"), 32, 32, Kind::bits},           {elementName("icm#"), 16, 12, Kind::bitsWithMask},
    {elementName("ics#"), 16, 16, Kind::bitsWithMask},   {elementName("ICN#"), 32, 32, Kind::bitsWithMask},
    {elementName("ich#"), 48, 48, Kind::bitsWithMask},   {elementName("icm4"), 16, 12, Kind::indices4},
    {elementName("ics4"), 16, 16, Kind::indices4},       {elementName("icl4"), 32, 32, Kind::indices4},
    {elementName("ich4"), 48, 48, Kind::indices4},       {elementName("icm8"), 16, 12, Kind::indices8},
    {elementName("ics8"), 16, 16, Kind::indices8},       {elementName("icl8"), 32, 32, Kind::indices8},
    {elementName("ich8"), 48, 48, Kind::indices8},       {elementName("is32"), 16, 16, Kind::colors},
    {elementName("il32"), 32, 32, Kind::colors},         {elementName("ih32"), 48, 48, Kind::colors},
    {elementName("it32"), 128, 128, Kind::colorsAfter4}, {elementName("s8mk"), 16, 16, Kind::mask},
    {elementName("l8mk"), 32, 32, Kind::mask},           {elementName("h8mk"), 48, 48, Kind::mask},
    {elementName("t8mk"), 128, 128, Kind::mask},         {elementName("icp4"), 16, 16, Kind::file},
    {elementName("icp5"), 32, 32, Kind::file},           {elementName("icp6"), 64, 64, Kind::file},
    {elementName("ic04"), 16, 16, Kind::file},           {elementName("ic05"), 32, 32, Kind::file},
    {elementName("ic07"), 128, 128, Kind::file},         {elementName("ic08"), 256, 256, Kind::file},
    {elementName("ic09"), 512, 512, Kind::file},         {elementName("ic10"), 1024, 1024, Kind::file},
    {elementName("ic11"), 32, 32, Kind::file},           {elementName("ic12"), 64, 64, Kind::file},
    {elementName("ic13"), 256, 256, Kind::file},         {elementName("ic14"), 512, 512, Kind::file},
    {elementName("icsb"), 18, 18, Kind::file},           {elementName("icsB"), 36, 36, Kind::file},
    {elementName("sb24"), 24, 24, Kind::file},           {elementName("SB24"), 48, 48, Kind::file},
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
