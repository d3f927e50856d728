// CodedPicture: a picture that a library has decoded, as planes of samples.
#pragma once

#include "platform/coregraphics/CodingPoints.h"
#include "platform/imageio/heif/PictureProperties.h"

namespace kestrine::heif {

/// Samples have one byte, or two in the machine's byte order if they have more than 8 bits.
struct Plane {
    const std::uint8_t* bytes = nullptr;
    std::ptrdiff_t stride = 0; ///< bytes from one row to the next
    Size size;

    const std::uint8_t* row(std::uint32_t y) const { return bytes + static_cast<std::ptrdiff_t>(y) * stride; }
};

struct DecodedPlanes {
    std::array<Plane, 3> planes; ///< Y, Cb and Cr; only Y if `isMonochrome`
    bool isMonochrome = false;
    bool isHalfWidth = false;  ///< chroma has half the columns, rounded up
    bool isHalfHeight = false; ///< chroma has half the rows, rounded up
    unsigned bits = 8;
    CodingPoints points; ///< as the compressed data say
};

/// Owns the samples. Any thread, one at a time.
class CodedPicture {
public:
    virtual ~CodedPicture() = default;
    const DecodedPlanes& planes() const { return planes_; }

protected:
    DecodedPlanes planes_;
};

/// Decodes the first picture in `data`, with up to `threads` threads. Fails if it is damaged or not of the
/// size `expected`, which is checked before any memory for pixels is allocated.
Result<std::unique_ptr<CodedPicture>> decodePicture(const CodingSetup& coding, ByteView data,
                                                    const Size& expected, std::size_t threads);

/// Fails if the library that decodes this kind of pictures is missing.
Result<void> requireLibrary(CodingSetup::Kind kind);

/// What the start of the picture says, for files that say nothing about colours themselves. nullopt
/// if that is not known without decoding.
std::optional<CodingPoints> pointsInHeader(const CodingSetup& coding, ByteView startOfData);

/// Estimated memory that decoding takes and that the decoded picture keeps, in bytes.
std::uint64_t bytesToDecode(const CodingSetup& coding, const Size& size);

} // namespace kestrine::heif
