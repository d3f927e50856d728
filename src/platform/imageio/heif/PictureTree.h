// PictureTree: how a picture is put together from coded pictures.
#pragma once

#include "platform/imageio/heif/PictureProperties.h"

namespace kestrine::heif {

/// A coded picture, or one that is derived from others. Its properties are views into the header of the file.
struct PictureNode {
    enum class Kind : std::uint8_t {
        coded,
        grid,    ///< tiles side by side
        overlay, ///< pictures on a canvas
        same,    ///< one picture, with further transformations
    };

    Kind kind = Kind::coded;
    Size size;                   ///< before `placement`
    Placement placement{Size{}}; ///< its transformations
    PictureProperties properties;
    std::vector<FileRange> data;                           ///< coded
    std::vector<std::shared_ptr<const PictureNode>> parts; ///< grid: row by row; overlay: the lowest first
    std::uint32_t columns = 1;                             ///< grid
    std::array<std::uint16_t, 4> fill{};                   ///< overlay: red, green, blue, alpha of the canvas
    struct Offset {
        std::int32_t x, y;
    };
    std::vector<Offset> offsets; ///< overlay: of the parts on the canvas

    std::shared_ptr<const PictureNode> alpha; ///< a grey picture, of any size; null: none
    bool isPremultiplied = false;             ///< colour is multiplied by alpha

    // The following members describe the node and all of its parts together:
    bool isMonochrome = true;        ///< no part has colours
    bool hasAlpha = false;           ///< some pixels may be transparent
    unsigned bits = 8;               ///< of the colours
    std::uint32_t codedPictures = 0; ///< to be decoded for the whole picture, at most maxCodedPictures
    std::uint64_t codedPixels = 0;   ///< to be decoded for the whole picture, with alpha

    /// The size after `placement`.
    Size shownSize() const { return placement.size(); }
};

using PictureNodePointer = std::shared_ptr<const PictureNode>;

/// A limit, so that visiting all parts of all parts ends soon.
inline constexpr std::uint32_t maxCodedPictures = 65536;

/// Whether items of that type are pictures that can be shown.
bool isPictureType(FourCC itemType);

/// A coded picture. Fails if its properties are incomplete or impossible.
Result<PictureNode> codedNode(PictureProperties properties, std::vector<FileRange> data);

/// Makes `alpha` the alpha plane of `node`. Its transformations are not used: those of the picture apply to
/// both. Fails if there are too many coded pictures then.
Result<void> attachAlpha(PictureNode& node, PictureNodePointer alpha, bool isPremultiplied);

/// The tree of the item `id`. Reads the descriptions of derived pictures from `reader`, but no coded picture.
/// Fails if a part is missing, unsupported or impossible.
Result<PictureNodePointer> readPictureTree(const ItemTable& table, ItemID id, const ByteReader& reader);

} // namespace kestrine::heif
