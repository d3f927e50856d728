#include "platform/imageio/jp2/Container.h"

#include "platform/host/BigEndian.h"
#include "platform/imageio/jp2/Codestream.h"

#include <array>
#include <string_view>

namespace kestrine::jp2 {

namespace {

constexpr std::uint64_t maxHeaderBytes = std::uint64_t{32} << 20; // a profile is the largest part
constexpr int maxBoxes = 1000;
constexpr std::size_t maxEntries = 1024, maxColumns = 255; // of a palette, by the standard

struct Box {
    std::string_view name;
    ByteView content;
};

/// Takes numbers from the front of bytes. Missing bytes are 0, and isShort() is then true.
class Numbers {
public:
    explicit Numbers(ByteView bytes) : rest_(bytes) {}

    std::uint64_t next(std::size_t size) {
        if (rest_.size() < size) {
            isShort_ = true;
            rest_ = {};
            return 0;
        }
        const std::uint64_t number = bigEndian(rest_.first(size));
        rest_ = rest_.subspan(size);
        return number;
    }
    std::uint32_t next32(std::size_t size) { return static_cast<std::uint32_t>(next(size)); }

    bool isShort() const { return isShort_; }
    ByteView rest() const { return rest_; }

private:
    ByteView rest_;
    bool isShort_ = false;
};

/// Takes the first box from `bytes`; nullopt if `bytes` do not hold a complete box.
std::optional<Box> takeBox(ByteView& bytes) {
    if (bytes.size() < 8)
        return std::nullopt;
    const std::uint64_t length = bigEndian(bytes.first(4));
    const std::size_t size = length == 0 ? bytes.size() : static_cast<std::size_t>(length);
    if (size < 8 || size > bytes.size())
        return std::nullopt;
    const Box box{{reinterpret_cast<const char*>(bytes.data()) + 4, 4}, bytes.subspan(8, size - 8)};
    bytes = bytes.subspan(size);
    return box;
}

/// The content of the header box; empty if there is none before the codestream.
Bytes headerBox(const ByteReader& reader) {
    std::uint64_t position = 0;
    std::array<std::uint8_t, 16> head{};
    for (int i = 0; i < maxBoxes && reader.readAt(position, head) >= 8; ++i) {
        const ByteView bytes(head);
        const std::string_view name(reinterpret_cast<const char*>(head.data()) + 4, 4);
        const bool isLong = bigEndian(bytes.first(4)) == 1;
        const std::uint64_t length = isLong ? bigEndian(bytes.subspan(8)) : bigEndian(bytes.first(4));
        const std::uint64_t begin = isLong ? 16 : 8;
        if (length < begin || length > reader.size() - position || name == "jp2c")
            break;
        if (name == "jp2h" && length - begin <= maxHeaderBytes) {
            Bytes content(length - begin);
            content.resize(reader.readAt(position + begin, content));
            return content;
        }
        position += length;
    }
    return {};
}

constexpr std::uint32_t namedSpace = 1, restrictedProfile = 2, anyProfile = 3;

/// The first colour box that can be used counts.
void readColor(Numbers numbers, Container& container) {
    if (container.space || !container.icc.empty())
        return;
    const std::uint64_t method = numbers.next(1);
    numbers.next(2); // precedence and approximation
    if (method == namedSpace)
        container.space = numbers.next32(4);
    else if (method == restrictedProfile || method == anyProfile)
        container.icc = copied(numbers.rest());
}

Result<void> readPalette(Numbers numbers, Palette& palette) {
    const Failure damaged{Reason::malformed, "the palette of the JPEG 2000 file is damaged"};
    const std::size_t entries = numbers.next(2), columns = numbers.next(1);
    if (entries == 0 || entries > maxEntries || columns == 0 || columns > maxColumns)
        return damaged;
    for (std::size_t c = 0; c < columns; ++c)
        palette.bits.push_back((numbers.next32(1) & 0x7f) + 1);
    palette.columns.assign(columns, {});
    for (std::size_t entry = 0; entry < entries; ++entry)
        for (std::size_t c = 0; c < columns; ++c)
            palette.columns[c].push_back(numbers.next32((palette.bits[c] + 7) / 8));
    for (const unsigned bits : palette.bits)
        if (bits > 16)
            return Failure{Reason::unsupported, "JPEG 2000 palettes of more than 16 bits are not supported"};
    return numbers.isShort() ? damaged : Result<void>{};
}

void readChannels(Numbers numbers, Container& container) {
    while (numbers.rest().size() >= 4) {
        const std::uint32_t component = numbers.next32(2);
        const bool usesPalette = numbers.next(1) == 1;
        const std::uint32_t column = numbers.next32(1);
        container.channels.push_back({component, usesPalette ? std::optional(column) : std::nullopt});
    }
}

void readUses(Numbers numbers, Container& container) {
    numbers.next(2); // how many there are
    while (numbers.rest().size() >= 6) {
        ChannelUse use;
        use.channel = numbers.next32(2);
        use.type = numbers.next32(2);
        use.color = numbers.next32(2);
        container.uses.push_back(use);
    }
}

} // namespace

Result<Container> readContainer(const ByteReader& reader) {
    Container container;
    std::array<std::uint8_t, 4> start{};
    if (reader.readAt(0, start) == start.size() && isBareCodestream(start))
        return container;
    const Bytes header = headerBox(reader);
    ByteView rest(header);
    while (const std::optional<Box> box = takeBox(rest)) {
        const Numbers numbers(box->content);
        if (box->name == "colr")
            readColor(numbers, container);
        else if (box->name == "pclr" && container.palette.columns.empty())
            TRY(readPalette(numbers, container.palette));
        else if (box->name == "cmap" && container.channels.empty())
            readChannels(numbers, container);
        else if (box->name == "cdef" && container.uses.empty())
            readUses(numbers, container);
    }
    return container;
}

} // namespace kestrine::jp2
