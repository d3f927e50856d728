#include "platform/finder/AppleDouble.h"

#include "platform/host/BigEndian.h"

#include <algorithm>
#include <cassert>
#include <tuple>

namespace kestrine {

namespace {

// The header: magic number, version, 16 bytes of filler, number of entries; all numbers are big-endian.
constexpr std::uint32_t magic = 0x00051607;
constexpr std::uint32_t version = 0x00020000;
constexpr std::size_t countPlace = 24;
constexpr std::size_t headerSize = 26;
// A line: the entry's number, the offset and the length of its content, 4 bytes each.
constexpr std::size_t lineSize = 12;
constexpr std::size_t lengthPlace = 8;

Failure malformed(const char* what) { return {Reason::malformed, what}; }

} // namespace

Result<AppleDouble> AppleDouble::parse(ByteView bytes) {
    if (bytes.size() < headerSize)
        return Failure{Reason::truncated, "the AppleDouble header is incomplete"};
    if (bigEndian(bytes.first(4)) != magic || bigEndian(bytes.subspan(4, 4)) != version)
        return malformed("not an AppleDouble container of version 2");
    const std::size_t count = bigEndian(bytes.subspan(countPlace, 2));
    if (count > (bytes.size() - headerSize) / lineSize)
        return Failure{Reason::truncated, "the AppleDouble list of entries is incomplete"};

    const std::size_t listEnd = headerSize + count * lineSize;
    std::vector<Line> lines;
    lines.reserve(count);
    for (std::size_t place = headerSize; place < listEnd; place += lineSize) {
        const ByteView line = bytes.subspan(place, lineSize);
        lines.push_back({place, static_cast<std::uint32_t>(bigEndian(line.first(4))),
                         bigEndian(line.subspan(4, 4)), bigEndian(line.subspan(lengthPlace, 4))});
        const std::size_t offset = lines.back().offset;
        if (offset < listEnd || offset > bytes.size() || lines.back().length > bytes.size() - offset)
            return malformed("an AppleDouble entry lies outside its container");
    }

    std::ranges::stable_sort(lines, {},
                             [](const Line& line) { return std::tuple(line.offset, line.length); });
    const auto overlap = [](const Line& line, const Line& next) {
        return line.offset + line.length > next.offset;
    };
    if (std::ranges::adjacent_find(lines, overlap) != lines.end())
        return malformed("two AppleDouble entries overlap");
    return AppleDouble(bytes, std::move(lines));
}

const AppleDouble::Line* AppleDouble::find(AppleDoubleEntry entry) const {
    const auto line = std::ranges::find(lines_, static_cast<std::uint32_t>(entry), &Line::id);
    return line == lines_.end() ? nullptr : &*line;
}

std::optional<ByteView> AppleDouble::content(AppleDoubleEntry entry) const {
    const Line* line = find(entry);
    if (!line)
        return std::nullopt;
    return bytes_.subspan(line->offset, line->length);
}

std::size_t AppleDouble::room(AppleDoubleEntry entry) const {
    const Line* line = find(entry);
    if (!line)
        return 0;
    const bool isLast = line == &lines_.back();
    return (isLast ? bytes_.size() : line[1].offset) - line->offset;
}

Bytes AppleDouble::withContent(AppleDoubleEntry entry, ByteView content) const {
    const Line* line = find(entry);
    assert(line && content.size() <= room(entry));
    Bytes changed(bytes_.begin(), bytes_.end());
    std::fill_n(changed.begin() + static_cast<std::ptrdiff_t>(line->offset), line->length, 0);
    std::ranges::copy(content, changed.begin() + static_cast<std::ptrdiff_t>(line->offset));
    for (std::size_t i = 0; i < 4; ++i)
        changed[line->place + lengthPlace + i] = static_cast<std::uint8_t>(content.size() >> (24 - 8 * i));
    return changed;
}

} // namespace kestrine
