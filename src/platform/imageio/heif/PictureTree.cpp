#include "platform/imageio/heif/PictureTree.h"

#include "platform/coregraphics/RowFormat.h"

#include <algorithm>
#include <limits>

namespace kestrine::heif {

namespace {

constexpr int maxTreeDepth = 8;
/// The maximum length of the description of a grid or overlay.
constexpr std::uint64_t maxDescriptionBytes = std::uint64_t{4} << 20;

std::uint64_t saturatedSum(std::uint64_t a, std::uint64_t b) {
    return a > std::numeric_limits<std::uint64_t>::max() - b ? std::numeric_limits<std::uint64_t>::max()
                                                             : a + b;
}

bool isWithinLimits(const Size& size) {
    return RowFormat{.width = size.width, .height = size.height}.isWithinLimits();
}

/// Applies the transformations.
Result<void> place(PictureNode& node) {
    if (node.size.width == 0 || node.size.height == 0)
        return Failure{Reason::empty, "the HEIF or AVIF picture has no pixels"};
    if (!isWithinLimits(node.size))
        return Failure{Reason::tooLarge, "the HEIF or AVIF picture has too many pixels"};
    node.placement = Placement(node.size);
    for (const Box& step : node.properties.transformations)
        TRY(addTransformation(node.placement, step));
    return {};
}

bool hasTransformationsOf(const PictureNode& one, const PictureNode& other) {
    return std::ranges::equal(one.properties.transformations, other.properties.transformations,
                              [](const Box& a, const Box& b) {
                                  return a.type == b.type && std::ranges::equal(a.content, b.content);
                              });
}

/// Some encoders give the turn of a grid to each of its tiles as well, although it is meant only once.
void ignoreRepeatedTransformations(PictureNode& grid) {
    if (grid.properties.transformations.empty() || !std::ranges::all_of(grid.parts, [&](const auto& tile) {
            return hasTransformationsOf(*tile, grid);
        }))
        return;
    for (PictureNodePointer& tile : grid.parts) {
        auto unturned = std::make_shared<PictureNode>(*tile);
        unturned->placement = Placement(unturned->size);
        tile = std::move(unturned);
    }
}

/// Adds what it costs to decode `part`.
Result<void> addCost(PictureNode& node, const PictureNode& part) {
    node.codedPictures += part.codedPictures; // does not overflow, since neither is larger than the maximum
    node.codedPixels = saturatedSum(node.codedPixels, part.codedPixels);
    if (node.codedPictures > maxCodedPictures)
        return Failure{Reason::tooLarge, "the picture consists of too many pictures"};
    return {};
}

CodingSetup::Kind codingOf(FourCC itemType) {
    switch (itemType) {
    case fourCC("hvc1"):
    case fourCC("hev1"):
        return CodingSetup::Kind::hevc;
    case fourCC("av01"):
        return CodingSetup::Kind::av1;
    default:
        return CodingSetup::Kind::none;
    }
}

Result<PictureNode::Kind> derivationOf(FourCC itemType) {
    switch (itemType) {
    case fourCC("grid"):
        return PictureNode::Kind::grid;
    case fourCC("iovl"):
        return PictureNode::Kind::overlay;
    case fourCC("iden"):
        return PictureNode::Kind::same;
    default:
        return Failure{Reason::unsupported,
                       "HEIF pictures of the kind \"" + nameOf(itemType) + "\" are not supported"};
    }
}

class TreeReader {
public:
    TreeReader(const ItemTable& table, const ByteReader& reader) : table_(table), reader_(reader) {}

    Result<PictureNodePointer> node(ItemID id, int depth) {
        if (const auto known = nodes_.find(id); known != nodes_.end())
            return known->second;
        if (depth > maxTreeDepth)
            return Failure{Reason::unsupported, "the picture consists of too many layers of pictures"};
        const Item* item = table_.item(id);
        if (item == nullptr)
            return damagedFile("a part of the picture is missing");
        if (item->unreadable)
            return *item->unreadable;
        PictureNode made = TRY(content(id, *item, depth));
        TRY(readAlpha(made, id, depth));
        const auto shared = std::make_shared<const PictureNode>(std::move(made));
        nodes_.emplace(id, shared);
        return PictureNodePointer(shared);
    }

private:
    Result<PictureNode> content(ItemID id, const Item& item, int depth) {
        PictureProperties properties = TRY(readProperties(item.properties));
        if (const CodingSetup::Kind coding = codingOf(item.type); coding != CodingSetup::Kind::none) {
            if (properties.coding.kind != coding)
                return damagedFile("a picture has no decoder configuration");
            return codedNode(std::move(properties), item.data);
        }
        PictureNode node;
        node.properties = std::move(properties);
        node.kind = TRY(derivationOf(item.type));
        for (const ItemID part : table_.references.targets(fourCC("dimg"), id)) {
            node.parts.push_back(TRY(this->node(part, depth + 1)));
            TRY(addPart(node, *node.parts.back()));
        }
        if (node.parts.empty())
            return damagedFile("the picture has no parts");
        TRY(readDerivation(node, item));
        TRY(place(node));
        return node;
    }

    Result<void> readDerivation(PictureNode& node, const Item& item) const {
        if (node.kind == PictureNode::Kind::grid) {
            ignoreRepeatedTransformations(node);
            return readGrid(node, item);
        }
        if (node.kind == PictureNode::Kind::overlay)
            return readOverlay(node, item);
        node.size = node.parts.front()->shownSize();
        return {};
    }

    static Result<void> addPart(PictureNode& node, const PictureNode& part) {
        node.isMonochrome = node.isMonochrome && part.isMonochrome;
        node.hasAlpha = node.hasAlpha || part.hasAlpha;
        node.bits = std::max(node.bits, part.bits);
        TRY(addCost(node, part));
        return {};
    }

    Result<Bytes> description(const Item& item) const {
        std::uint64_t length = 0;
        for (const FileRange& range : item.data)
            length += range.length;
        if (length > maxDescriptionBytes)
            return damagedFile("the description of a picture is too long");
        return readRanges(reader_, item.data);
    }

    Result<void> readGrid(PictureNode& node, const Item& item) const {
        const Bytes bytes = TRY(description(item));
        Cursor cursor(bytes);
        cursor.skip(1); // version
        const std::size_t numberSize = (cursor.u8() & 1) != 0 ? 4 : 2;
        const std::uint32_t rows = cursor.u8() + 1u;
        node.columns = cursor.u8() + 1u;
        const auto width = static_cast<std::uint32_t>(cursor.number(numberSize));
        node.size = {width, static_cast<std::uint32_t>(cursor.number(numberSize))};
        if (!cursor.isSound() || node.parts.size() < std::size_t{rows} * node.columns)
            return damagedFile("the picture has too few tiles");
        node.parts.resize(std::size_t{rows} * node.columns);
        const Size tile = node.parts.front()->shownSize();
        for (const PictureNodePointer& part : node.parts)
            if (part->shownSize() != tile)
                return damagedFile("the tiles of the picture have different sizes");
        const auto fits = [](std::uint64_t tileSide, std::uint32_t count, std::uint32_t side) {
            return tileSide * count >= side && tileSide * (count - 1) < side;
        };
        if (!fits(tile.width, node.columns, node.size.width) || !fits(tile.height, rows, node.size.height))
            return damagedFile("the tiles do not cover the picture");
        return {};
    }

    Result<void> readOverlay(PictureNode& node, const Item& item) const {
        const Bytes bytes = TRY(description(item));
        Cursor cursor(bytes);
        cursor.skip(1); // version
        const std::size_t numberSize = (cursor.u8() & 1) != 0 ? 4 : 2;
        for (std::uint16_t& sample : node.fill)
            sample = cursor.u16();
        const auto width = static_cast<std::uint32_t>(cursor.number(numberSize));
        node.size = {width, static_cast<std::uint32_t>(cursor.number(numberSize))};
        const auto offset = [&] {
            return numberSize == 4 ? cursor.s32() : static_cast<std::int16_t>(cursor.u16());
        };
        for (std::size_t i = 0; i < node.parts.size(); ++i) {
            const std::int32_t x = offset();
            node.offsets.push_back({x, offset()});
        }
        if (!cursor.isSound())
            return damagedFile("the description of the picture is too short");
        node.isMonochrome = false; // the canvas has a colour
        node.hasAlpha = node.fill[3] != 0xFFFF;
        return {};
    }

    Result<void> readAlpha(PictureNode& node, ItemID id, int depth) {
        for (const ItemID auxiliary : table_.references.sources(fourCC("auxl"), id)) {
            const Item* item = table_.item(auxiliary);
            if (item == nullptr || !isAlpha(item->properties))
                continue;
            const std::vector<ItemID>& premultiplied = table_.references.targets(fourCC("prem"), id);
            return attachAlpha(node, TRY(this->node(auxiliary, depth + 1)),
                               std::ranges::find(premultiplied, auxiliary) != premultiplied.end());
        }
        return {};
    }

    const ItemTable& table_;
    const ByteReader& reader_;
    std::map<ItemID, PictureNodePointer> nodes_;
};

} // namespace

bool isPictureType(FourCC itemType) {
    return codingOf(itemType) != CodingSetup::Kind::none || derivationOf(itemType).ok();
}

Result<PictureNode> codedNode(PictureProperties properties, std::vector<FileRange> data) {
    if (!properties.size || data.empty())
        return damagedFile("a picture has no size or no data");
    PictureNode node;
    node.size = *properties.size;
    node.isMonochrome = properties.coding.isMonochrome;
    node.bits = properties.coding.bits;
    node.codedPictures = 1;
    node.codedPixels = std::uint64_t{node.size.width} * node.size.height;
    node.properties = std::move(properties);
    node.data = std::move(data);
    TRY(place(node));
    return node;
}

Result<void> attachAlpha(PictureNode& node, PictureNodePointer alpha, bool isPremultiplied) {
    TRY(addCost(node, *alpha));
    node.alpha = std::move(alpha);
    node.hasAlpha = true;
    node.isPremultiplied = isPremultiplied;
    return {};
}

Result<PictureNodePointer> readPictureTree(const ItemTable& table, ItemID id, const ByteReader& reader) {
    return TreeReader(table, reader).node(id, 0);
}

} // namespace kestrine::heif
