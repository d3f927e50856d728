#include "platform/imageio/heif/PictureTree.h"

#include "platform/coregraphics/RowFormat.h"

#include <algorithm>
#include <limits>

namespace kestrine::heif {

namespace {

constexpr int maxDepth = 8;
/// Of the description of a grid or overlay.
constexpr std::uint64_t maxDescriptionBytes = std::uint64_t{4} << 20;

std::uint64_t saturatedSum(std::uint64_t a, std::uint64_t b) {
    return a > std::numeric_limits<std::uint64_t>::max() - b ? std::numeric_limits<std::uint64_t>::max()
                                                             : a + b;
}

bool isWithinLimits(const Size& size) {
    return RowFormat{.width = size.width, .height = size.height}.isWithinLimits();
}

class TreeReader {
public:
    TreeReader(const ItemTable& table, const ByteReader& reader) : table_(table), reader_(reader) {}

    Result<PictureNodePointer> node(ItemID id, int depth) {
        if (const auto known = nodes_.find(id); known != nodes_.end())
            return known->second;
        if (depth > maxDepth)
            return Failure{Reason::unsupported, "the picture consists of too many layers of pictures"};
        const Item* item = table_.item(id);
        if (item == nullptr)
            return damagedFile("a part of the picture is missing");
        if (item->unreadable)
            return *item->unreadable;
        PictureNode made;
        made.properties = TRY(readProperties(item->properties));
        TRY(readContent(made, id, *item, depth));
        TRY(readAlpha(made, id, depth));
        TRY(place(made));
        const auto shared = std::make_shared<const PictureNode>(std::move(made));
        nodes_.emplace(id, shared);
        return PictureNodePointer(shared);
    }

private:
    Result<void> readContent(PictureNode& node, ItemID id, const Item& item, int depth) {
        switch (item.type) {
        case fourCC("hvc1"):
        case fourCC("hev1"):
            return readCoded(node, item, CodingSetup::Kind::hevc);
        case fourCC("av01"):
            return readCoded(node, item, CodingSetup::Kind::av1);
        case fourCC("grid"):
            node.kind = PictureNode::Kind::grid;
            break;
        case fourCC("iovl"):
            node.kind = PictureNode::Kind::overlay;
            break;
        case fourCC("iden"):
            node.kind = PictureNode::Kind::same;
            break;
        default:
            return Failure{Reason::unsupported,
                           "HEIF pictures of the kind \"" + nameOf(item.type) + "\" are not supported"};
        }
        for (const ItemID part : table_.references.targets(fourCC("dimg"), id)) {
            node.parts.push_back(TRY(this->node(part, depth + 1)));
            addPart(node, *node.parts.back());
        }
        if (node.parts.empty())
            return damagedFile("the picture has no parts");
        if (node.kind == PictureNode::Kind::grid)
            return readGrid(node, item);
        if (node.kind == PictureNode::Kind::overlay)
            return readOverlay(node, item);
        node.size = node.parts.front()->shownSize();
        return {};
    }

    static void addPart(PictureNode& node, const PictureNode& part) {
        node.isMonochrome = node.isMonochrome && part.isMonochrome;
        node.hasAlpha = node.hasAlpha || part.hasAlpha;
        node.bits = std::max(node.bits, part.bits);
        node.codedPixels = saturatedSum(node.codedPixels, part.codedPixels);
    }

    static Result<void> readCoded(PictureNode& node, const Item& item, CodingSetup::Kind kind) {
        const CodingSetup& coding = node.properties.coding;
        if (coding.kind != kind || !node.properties.size || item.data.empty())
            return damagedFile("a picture has no size, no data or no decoder configuration");
        node.size = *node.properties.size;
        node.data = item.data;
        node.isMonochrome = coding.isMonochrome;
        node.bits = coding.bits;
        node.codedPixels = std::uint64_t{node.size.width} * node.size.height;
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

    Result<void> readGrid(PictureNode& node, const Item& item) {
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

    Result<void> readOverlay(PictureNode& node, const Item& item) {
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

    /// An alpha plane must have the stored size of its picture, and its own transformations are those of the
    /// picture.
    Result<void> readAlpha(PictureNode& node, ItemID id, int depth) {
        for (const ItemID auxiliary : table_.references.sources(fourCC("auxl"), id)) {
            const Item* item = table_.item(auxiliary);
            if (item == nullptr || isAlphaType(TRY(readProperties(item->properties)).auxiliaryType) == false)
                continue;
            PictureNodePointer alpha = TRY(this->node(auxiliary, depth + 1));
            if (alpha->size != node.size)
                return Failure{Reason::unsupported,
                               "HEIF and AVIF pictures whose alpha plane has another size "
                               "are not supported"};
            node.codedPixels = saturatedSum(node.codedPixels, alpha->codedPixels);
            node.alpha = std::move(alpha);
            node.hasAlpha = true;
            const std::vector<ItemID>& premultiplied = table_.references.targets(fourCC("prem"), id);
            node.isPremultiplied = std::ranges::find(premultiplied, auxiliary) != premultiplied.end();
            return {};
        }
        return {};
    }

    static Result<void> place(PictureNode& node) {
        if (!isWithinLimits(node.size))
            return Failure{node.size.width == 0 || node.size.height == 0 ? Reason::empty : Reason::tooLarge,
                           "the HEIF or AVIF picture has no or too many pixels"};
        node.placement = Placement(node.size);
        for (const Box& step : node.properties.transformations)
            TRY(addTransformation(node.placement, step));
        return {};
    }

    const ItemTable& table_;
    const ByteReader& reader_;
    std::map<ItemID, PictureNodePointer> nodes_;
};

} // namespace

Result<PictureNodePointer> readPictureTree(const ItemTable& table, ItemID id, const ByteReader& reader) {
    return TreeReader(table, reader).node(id, 0);
}

} // namespace kestrine::heif
