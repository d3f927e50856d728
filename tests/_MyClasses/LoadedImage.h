// An image loaded from a file that was made for it.
#pragma once

#include "_MyClasses/Category/ImageUtility.h"
#include "platform/imageio/Codecs.h"
#include "tests/support/Pictures.h"
#include "tests/support/TemporaryFolder.h"

namespace kestrine::testing {

/// A picture in a TIFF file, with a profile and so many dots per inch, and the image loaded from it.
class LoadedImage {
public:
    explicit LoadedImage(const PixelBuffer& pixels, double dotsPerInch = 72)
        : path(NSString::fromUTF8(folder_.write("a.tif", tiffOf(pixels, dotsPerInch)))),
          image(NSImage::initWithContentsOfFile(path)) {}
    LoadedImage(std::uint32_t width, std::uint32_t height, double dotsPerInch = 72)
        : LoadedImage(makePhoto({width, height, ColorModel::rgb, false, SampleDepth::bits8}), dotsPerInch) {}

private:
    static Bytes tiffOf(const PixelBuffer& pixels, double dotsPerInch) {
        const ColorProfile profile = ColorProfile::adobeRGB();
        const auto rows = rowsOfPixels(std::make_shared<PixelBuffer>(pixels));
        return *encoded(tiff::encode, *rows, {.resolution = {dotsPerInch, dotsPerInch}, .profile = &profile});
    }
    TemporaryFolder folder_;

public:
    const NSString path;
    const std::shared_ptr<NSImage> image;
};

inline PixelBuffer pixelsOf(const std::shared_ptr<NSImage>& image) {
    return *readPixels(image->representations().front()->picture());
}

} // namespace kestrine::testing
