// Reads any bytes as an ICC profile, and reads its name. If the profile is accepted, its curves must be
// invertible and pixels can be converted.
#include "platform/coregraphics/ColorConversion.h"
#include "platform/coregraphics/PixelBuffer.h"
#include "platform/coregraphics/ProfileName.h"
#include "platform/coregraphics/ToneCurve.h"

#include <cstdlib>

namespace {

using namespace kestrine;

void tryPicture(ByteView icc, ColorModel model) {
    const auto profile = ColorProfile::fromICC(icc, model);
    if (!profile)
        return;
    for (const ToneCurve& curve : toneCurves(&*profile, model))
        if (std::abs(curve.stored(curve.light(0.7)) - 0.7) > 1e-3)
            std::abort();
    const auto pixels = std::make_shared<PixelBuffer>(RowFormat{5, 1, model, true, SampleDepth::bits8});
    const auto rows = rowsInSRGB(rowsOfPixels(pixels), &*profile);
    (void)readAllRows(*rows);
}

void tryForeign(ByteView icc, ForeignModel model) {
    const std::uint8_t from[10] = {};
    std::uint8_t to[8];
    ForeignConverter::create(model, SampleDepth::bits8, true, icc)->convert(from, to, 2);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const ByteView icc(bytes, size);
    constexpr std::size_t longestName = 300;
    if (profileName(icc).size() > longestName)
        std::abort();
    tryPicture(icc, ColorModel::gray);
    tryPicture(icc, ColorModel::rgb);
    tryForeign(icc, ForeignModel::cmyk);
    tryForeign(icc, ForeignModel::lab);
    return 0;
}
