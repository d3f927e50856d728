// Converts rows between colour spaces.
#pragma once

#include "platform/coregraphics/ColorProfile.h"
#include "platform/coregraphics/RowSource.h"

#include <optional>

namespace kestrine {

/// Colour models other than grey and RGB that some formats store.
enum class ForeignModel : std::uint8_t { cmyk, cmykInverted, lab };

/// Converts pixels of a foreign model to sRGB. One thread at a time.
class ForeignConverter {
public:
    /// `icc` is the profile of the picture. If it is not valid for this model, CMYK is taken as the
    /// complement of RGB, and Lab as CIE L*a*b* under D50. `depth` is that of the source and of the result.
    /// With `alpha` each pixel has an alpha sample after the others, which is copied.
    static std::unique_ptr<ForeignConverter> create(ForeignModel model, SampleDepth depth, bool alpha,
                                                    ByteView icc);
    virtual ~ForeignConverter() = default;
    /// Converts `pixels` pixels. The buffers must not overlap.
    virtual void convert(const std::uint8_t* from, std::uint8_t* to, std::size_t pixels) = 0;
};

/// `rows` (grey or RGB, with the given profile) as sRGB with the same depth and alpha. Grey becomes RGB. If
/// `profile` is null, the rows are sRGB already, or grey with the tone curve of sRGB.
RowSourcePointer rowsInSRGB(RowSourcePointer rows, const ColorProfile* profile);

/// RGB `rows` with the given profile in the space of another RGB profile; unchanged if one of them cannot be
/// used.
RowSourcePointer rowsInProfile(RowSourcePointer rows, const ColorProfile& profile,
                               const ColorProfile& target);

/// `rows` like rowsInSRGB(), as generic RGB with 8 bits and alpha, which is opaque if `rows` have none.
RowSourcePointer rowsInGenericRGBA(RowSourcePointer rows, const ColorProfile* profile);

} // namespace kestrine
