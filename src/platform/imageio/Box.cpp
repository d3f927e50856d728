#include "platform/imageio/Box.h"

#include "platform/host/BigEndian.h"

#include <algorithm>
#include <array>

namespace kestrine {

std::optional<Box> takeBox(ByteView& bytes) {
    Cursor cursor(bytes);
    std::uint64_t size = cursor.u32();
    const FourCC type = cursor.u32();
    if (size == 1)
        size = cursor.number(8);
    else if (size == 0) // up to the end
        size = bytes.size();
    if (type == fourCC("uuid"))
        cursor.skip(16);
    const std::size_t header = bytes.size() - cursor.rest().size();
    if (!cursor.isSound() || size < header || size > bytes.size())
        return std::nullopt;
    const ByteView whole = bytes.first(static_cast<std::size_t>(size));
    bytes = bytes.subspan(whole.size());
    return Box{type, whole.subspan(header)};
}

std::string nameOf(FourCC code) {
    std::string name;
    for (int shift = 24; shift >= 0; shift -= 8) {
        const auto character = static_cast<char>(code >> shift);
        name.push_back(character >= ' ' && character <= '~' ? character : '?');
    }
    return name;
}

Result<std::vector<Box>> boxesIn(ByteView content) {
    constexpr std::size_t maxBoxes = 65536;
    std::vector<Box> boxes;
    while (!content.empty()) {
        const std::optional<Box> box = takeBox(content);
        if (!box || boxes.size() == maxBoxes)
            return Failure{Reason::malformed, "the file is damaged: its boxes do not fit into each other"};
        boxes.push_back(*box);
    }
    return boxes;
}

std::optional<ByteView> contentOf(const std::vector<Box>& boxes, FourCC type) {
    const auto found = std::ranges::find(boxes, type, &Box::type);
    return found == boxes.end() ? std::nullopt : std::optional(found->content);
}

std::optional<BoxPlace> boxAt(const ByteReader& reader, std::uint64_t offset) {
    std::array<std::uint8_t, 16> bytes{};
    Cursor cursor(ByteView(bytes).first(reader.readAt(offset, bytes)));
    std::uint64_t size = cursor.u32();
    std::uint64_t header = 8;
    const FourCC type = cursor.u32();
    if (size == 0) {
        size = reader.size() - offset;
    } else if (size == 1) {
        size = cursor.number(8);
        header = 16;
    }
    if (!cursor.isSound() || size < header)
        return std::nullopt;
    return BoxPlace{type, {offset + header, size - header}};
}

std::uint64_t Cursor::number(std::size_t size) { return bigEndian(take(size)); }

ByteView Cursor::take(std::size_t size) {
    if (size > rest_.size()) {
        isSound_ = false;
        rest_ = {};
        return {};
    }
    const ByteView taken = rest_.first(size);
    rest_ = rest_.subspan(size);
    return taken;
}

FullBoxHeader readFullBoxHeader(Cursor& cursor) {
    const std::uint32_t both = cursor.u32();
    return {static_cast<std::uint8_t>(both >> 24), both & 0xFFFFFF};
}

} // namespace kestrine
