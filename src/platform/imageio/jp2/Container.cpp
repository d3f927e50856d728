#include "platform/imageio/jp2/Container.h"

#include "platform/imageio/Box.h"
#include "platform/imageio/PartReader.h"
#include "platform/imageio/jp2/Codestream.h"

#include <algorithm>
#include <array>

namespace kestrine::jp2 {

namespace {

constexpr std::uint64_t maxHeaderBytes = std::uint64_t{32} << 20; // a profile is the largest part
constexpr int maxBoxes = 1000;
constexpr std::size_t maxEntries = 1024, maxColumns = 255; // of a palette, as ISO 15444-1 says

/// The first box of that type before the codestream, or the codestream itself.
std::optional<BoxPlace> firstBox(const ByteReader& reader, FourCC type) {
    std::uint64_t position = 0;
    for (int i = 0; i < maxBoxes; ++i) {
        const std::optional<BoxPlace> box = boxAt(reader, position);
        if (!box || box->content.offset > reader.size())
            break;
        if (box->type == type)
            return box;
        if (box->type == fourCC("jp2c") || box->content.length > reader.size() - box->content.offset)
            break;
        position = box->content.offset + box->content.length;
    }
    return std::nullopt;
}

/// The content of the header box; empty if there is none before the codestream.
Bytes headerBox(const ByteReader& reader) {
    const std::optional<BoxPlace> box = firstBox(reader, fourCC("jp2h"));
    if (!box || box->content.length > std::min(maxHeaderBytes, reader.size() - box->content.offset))
        return {};
    Bytes content(box->content.length);
    content.resize(reader.readAt(box->content.offset, content));
    return content;
}

bool isBare(const ByteReader& reader) {
    std::array<std::uint8_t, 4> start{};
    return reader.readAt(0, start) == start.size() && isBareCodestream(start);
}

constexpr std::uint32_t namedSpace = 1, restrictedProfile = 2, anyProfile = 3;

/// The first colour box with a supported method counts.
void readColor(Cursor numbers, Container& container) {
    if (container.space || !container.icc.empty())
        return;
    const std::uint8_t method = numbers.u8();
    numbers.skip(2); // precedence and approximation
    if (method == namedSpace)
        container.space = numbers.u32();
    else if (method == restrictedProfile || method == anyProfile)
        container.icc = copied(numbers.rest());
}

Result<void> readPalette(Cursor numbers, Palette& palette) {
    const Failure damaged{Reason::malformed, "the palette of the JPEG 2000 file is damaged"};
    const std::size_t entries = numbers.u16(), columns = numbers.u8();
    if (entries == 0 || entries > maxEntries || columns == 0 || columns > maxColumns)
        return damaged;
    for (std::size_t c = 0; c < columns; ++c)
        palette.bits.push_back((numbers.u8() & 0x7fu) + 1);
    for (const unsigned bits : palette.bits)
        if (bits > 16)
            return Failure{Reason::unsupported, "JPEG 2000 palettes of more than 16 bits are not supported"};
    palette.columns.assign(columns, {});
    for (std::size_t entry = 0; entry < entries; ++entry)
        for (std::size_t c = 0; c < columns; ++c)
            palette.columns[c].push_back(
                static_cast<std::uint32_t>(numbers.number((palette.bits[c] + 7) / 8)));
    return numbers.isSound() ? Result<void>() : damaged;
}

void readChannels(Cursor numbers, Container& container) {
    while (numbers.rest().size() >= 4) {
        const std::uint32_t component = numbers.u16();
        const bool usesPalette = numbers.u8() == 1;
        const std::uint32_t column = numbers.u8();
        container.channels.push_back({component, usesPalette ? std::optional(column) : std::nullopt});
    }
}

void readUses(Cursor numbers, Container& container) {
    numbers.skip(2); // how many there are
    while (numbers.rest().size() >= 6) {
        ChannelUse use;
        use.channel = numbers.u16();
        use.type = numbers.u16();
        use.color = numbers.u16();
        container.uses.push_back(use);
    }
}

} // namespace

Result<std::shared_ptr<const ByteReader>> codestreamIn(std::shared_ptr<const ByteReader> file) {
    if (isBare(*file))
        return file;
    const std::optional<BoxPlace> box = firstBox(*file, fourCC("jp2c"));
    if (!box)
        return Failure{Reason::malformed, "the JPEG 2000 file has no codestream"};
    return readerOfPart(std::move(file), box->content.offset, box->content.length);
}

Result<Container> readContainer(const ByteReader& reader) {
    Container container;
    if (isBare(reader))
        return container;
    const Bytes header = headerBox(reader);
    ByteView rest(header);
    while (const std::optional<Box> box = takeBox(rest)) {
        const Cursor numbers(box->content);
        if (box->type == fourCC("colr"))
            readColor(numbers, container);
        else if (box->type == fourCC("pclr") && container.palette.columns.empty())
            TRY(readPalette(numbers, container.palette));
        else if (box->type == fourCC("cmap") && container.channels.empty())
            readChannels(numbers, container);
        else if (box->type == fourCC("cdef") && container.uses.empty())
            readUses(numbers, container);
    }
    return container;
}

} // namespace kestrine::jp2
