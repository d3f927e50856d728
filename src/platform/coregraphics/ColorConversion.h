// Rows of one colour space turned into another.
#pragma once

#include "platform/coregraphics/ColorProfile.h"
#include "platform/coregraphics/RowSource.h"

#include <optional>

namespace kestrine {

/// Samples that are neither grey nor RGB, as a few formats store them.
enum class ForeignModel : std::uint8_t { cmyk, cmykInverted, lab };

/// Turns `pixels` pixels of a foreign model into sRGB. One converter serves one thread.
class ForeignConverter {
public:
    /// `icc` is the picture's own profile, used when it is one for this model; else CMYK is taken as
    /// the plain complement of RGB. `depth` is that of source and result alike. `extraChannels` samples
    /// (0 or 1) behind each source pixel are alpha and are copied.
    static std::unique_ptr<ForeignConverter> create(ForeignModel model, SampleDepth depth, bool alpha,
                                                    ByteView icc);
    virtual ~ForeignConverter() = default;
    virtual void convert(const std::uint8_t* from, std::uint8_t* to, std::size_t pixels) = 0;
};

/// `rows` (grey or RGB, with the given profile) as sRGB of the same depth; alpha is kept, grey becomes RGB.
/// nullptr as profile means that the rows are sRGB already.
RowSourcePointer rowsInSRGB(RowSourcePointer rows, const ColorProfile* profile);

/// The same as generic RGB, with 8 bits and an alpha of their own.
RowSourcePointer rowsInGenericRGBA(RowSourcePointer rows, const ColorProfile* profile);

} // namespace kestrine
