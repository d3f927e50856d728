// PictureProperties: what the properties of an item, or the description of a track, say about a picture.
#pragma once

#include "platform/coregraphics/CodingPoints.h"
#include "platform/imageio/heif/ItemTable.h"
#include "platform/imageio/heif/Placement.h"

#include <memory>
#include <string_view>

namespace kestrine::heif {

/// What coded pictures need besides their own data.
struct CodingSetup {
    enum class Kind : std::uint8_t { none, hevc, av1 };
    Kind kind = Kind::none;
    ByteView configuration; ///< the content of the box hvcC or av1C
    unsigned bits = 8;      ///< per sample, 8 to 12
    bool isMonochrome = false;
    std::uint8_t operatingPoint = 0;           ///< AV1: of layered pictures
    std::optional<std::uint16_t> spatialLayer; ///< AV1: the layer to show, else the best one
};

/// Views are into the header of the file; many pictures may share a large profile.
struct PictureProperties {
    std::optional<Size> size;         ///< stored, before any transformation
    std::vector<Box> transformations; ///< in the order in which they apply
    std::optional<CodingPoints> points;
    ByteView icc;
    std::uint16_t brightestLight = 0; ///< of HDR pictures, in cd/m2; 0: not known
    bool isAlpha = false;             ///< whether this is the alpha plane of another picture
    CodingSetup coding;
};

/// Fails if a property is damaged, or if one that is essential is not supported.
Result<PictureProperties> readProperties(const std::vector<ItemProperty>& properties);

/// Whether they are those of an alpha plane. Other auxiliary pictures may have properties that are not
/// supported.
bool isAlpha(const std::vector<ItemProperty>& properties);

} // namespace kestrine::heif
