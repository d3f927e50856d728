#include "platform/imageio/heif/ItemLocations.h"

#include <algorithm>
#include <limits>

namespace kestrine::heif {

namespace {

constexpr std::size_t maxExtents = std::size_t{1} << 20; ///< of all items together
constexpr std::size_t maxRanges = 65536;                 ///< of one item
constexpr int maxItemDepth = 4;                          ///< of items whose data are cut from other items
/// Looks at a part of an item, over all items. Items that are cut from each other could need many.
constexpr std::size_t maxSteps = std::size_t{1} << 22;

/// The part [offset, offset + length) of what `whole` consists of; nullopt if it reaches beyond the end. A
/// length of 0 means everything from `offset` on.
std::optional<std::vector<FileRange>> partOf(const std::vector<FileRange>& whole, std::uint64_t offset,
                                             std::uint64_t length) {
    const bool isUpToEnd = length == 0;
    std::vector<FileRange> part;
    for (const FileRange& range : whole) {
        if (offset >= range.length) {
            offset -= range.length;
            continue;
        }
        const std::uint64_t available = range.length - offset;
        const std::uint64_t taken = isUpToEnd ? available : std::min(available, length);
        if (taken > 0)
            part.push_back({range.offset + offset, taken});
        length -= isUpToEnd ? 0 : taken;
        offset = 0;
        if (!isUpToEnd && length == 0)
            break;
    }
    if (length > 0 || offset > 0)
        return std::nullopt;
    return part;
}

} // namespace

Result<ItemLocations> ItemLocations::read(ByteView iloc) {
    ItemLocations result;
    Cursor cursor(iloc);
    const unsigned version = readFullBoxHeader(cursor).version;
    if (version > 2)
        return Failure{Reason::unsupported,
                       "HEIF and AVIF files with this version of item locations are not supported"};
    const std::uint16_t sizes = cursor.u16();
    const std::size_t offsetSize = sizes >> 12, lengthSize = sizes >> 8 & 15, baseSize = sizes >> 4 & 15;
    const std::size_t indexSize = version > 0 ? sizes & 15 : 0;
    if (std::max({offsetSize, lengthSize, baseSize, indexSize}) > 8)
        return damagedFile("its item locations have invalid field sizes");
    std::size_t extents = 0;
    for (std::uint32_t left = version < 2 ? cursor.u16() : cursor.u32(); left > 0 && cursor.isSound();
         --left) {
        const ItemID id = version < 2 ? cursor.u16() : cursor.u32();
        Location location;
        location.method = version > 0 ? cursor.u16() & 15 : 0;
        location.isElsewhere = cursor.u16() != 0;
        const std::uint64_t base = cursor.number(baseSize);
        for (unsigned count = cursor.u16(); count > 0 && cursor.isSound(); --count) {
            Extent extent;
            extent.index = cursor.number(indexSize);
            extent.offset = cursor.number(offsetSize);
            extent.length = cursor.number(lengthSize);
            if (extent.offset > std::numeric_limits<std::uint64_t>::max() - base || ++extents > maxExtents)
                return damagedFile("its item locations are impossible");
            extent.offset += base;
            location.extents.push_back(extent);
        }
        result.locations_.emplace(id, std::move(location));
    }
    if (!cursor.isSound())
        return damagedFile("its item locations are incomplete");
    return result;
}

Result<std::vector<FileRange>> ItemLocations::rangesOf(ItemID id, const Surroundings& surroundings) {
    return ranges(id, surroundings, 0);
}

Result<std::vector<FileRange>> ItemLocations::ranges(ItemID id, const Surroundings& surroundings, int depth) {
    const auto found = locations_.find(id);
    if (found == locations_.end())
        return std::vector<FileRange>();
    const Location& location = found->second;
    if (location.method > 2)
        return Failure{Reason::unsupported, "the picture is stored by an unknown method"};
    if (location.isElsewhere)
        return Failure{Reason::unsupported, "the picture is stored in another file"};
    if (depth > maxItemDepth)
        return damagedFile("its items are nested too deeply");
    const std::vector<ItemID> dataItems =
        location.method == 2 ? surroundings.dataItems(id) : std::vector<ItemID>();
    std::vector<FileRange> all;
    std::uint64_t length = 0;
    for (const Extent& extent : location.extents) {
        const std::vector<FileRange> whole = TRY(source(location, extent, dataItems, surroundings, depth));
        if ((steps_ += whole.size() + 1) > maxSteps)
            return damagedFile("its items consist of too many parts");
        const std::optional<std::vector<FileRange>> part = partOf(whole, extent.offset, extent.length);
        if (!part)
            return Failure{Reason::truncated, "the HEIF or AVIF file ends too early"};
        for (const FileRange& range : *part) {
            length += range.length;
            all.push_back(range);
        }
        if (length > surroundings.fileBytes || all.size() > maxRanges)
            return damagedFile("an item is longer than the file");
    }
    return all;
}

Result<std::vector<FileRange>> ItemLocations::source(const Location& location, const Extent& extent,
                                                     const std::vector<ItemID>& dataItems,
                                                     const Surroundings& surroundings, int depth) {
    if (location.method == 0)
        return std::vector<FileRange>{{0, surroundings.fileBytes}};
    if (location.method == 1)
        return std::vector<FileRange>{surroundings.itemData};
    const std::uint64_t index = std::max<std::uint64_t>(extent.index, 1);
    if (index > dataItems.size())
        return damagedFile("the data of an item are missing");
    return ranges(dataItems[static_cast<std::size_t>(index - 1)], surroundings, depth + 1);
}

} // namespace kestrine::heif
