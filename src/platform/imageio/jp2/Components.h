// Components: what the components of a JPEG 2000 picture mean, and how they become pixels.
#pragma once

#include "platform/coregraphics/ColorConversion.h"
#include "platform/imageio/ImageCodec.h"
#include "platform/imageio/jp2/Container.h"
#include "platform/imageio/jp2/Library.h"

#include <vector>

namespace kestrine::jp2 {

enum class Inks : std::uint8_t { stored, yCbCr, cmyk }; ///< how colour is stored

struct Components {
    Inks inks = Inks::stored;
    std::vector<Channel> channels; ///< colour, then alpha if there is any
    bool isPremultiplied = false;
    RowFormat format; ///< of the pixels at full size
    Bytes icc;        ///< of the file
    Palette palette;
};

/// Fails as unsupported if the colour space is not known here, and as malformed if the container contradicts
/// the codestream.
Result<Components> componentsOf(const opj_image_t& image, Container container);

/// The profile of the pixels; none means sRGB.
std::optional<ColorProfile> profileOf(const Components& components);

/// Makes pixels of decoded components. One thread at a time.
class PixelMaker {
public:
    explicit PixelMaker(const Components& components);

    /// Makes row `y` of the decoded tile in `image`, which has `rows` rows and as many columns as `row` has
    /// pixels. A component with fewer samples is enlarged without interpolation.
    void makeRow(const opj_image_t& image, std::uint32_t y, std::uint32_t rows, std::span<std::uint8_t> row);

private:
    template <class Sample>
    void gather(const opj_image_t& image, std::uint32_t y, std::uint32_t rows,
                std::span<Sample> samples) const;

    const Components components_;
    std::unique_ptr<ForeignConverter> inkConverter_; ///< only for CMYK
    Bytes stored_;                                   ///< a row before conversion
};

} // namespace kestrine::jp2
