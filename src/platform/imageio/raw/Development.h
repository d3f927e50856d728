// Development: makes a picture of what a camera's sensor recorded, with LibRaw.
#pragma once

#include "platform/coregraphics/PixelBuffer.h"
#include "platform/imageio/raw/Header.h"
#include "platform/imageio/raw/Library.h"

namespace kestrine::raw {

/// What LibRaw knows of a file before it decodes the sensor's data.
struct Negative {
    RowFormat format; ///< of the developed picture, as the sensor lies: 16 bits, RGB in sRGB or grey
    Sides sensor{};
    int maxHalvings = 0;         ///< 1 if four pixels of the sensor can become one
    int orientation = 1;         ///< EXIF, 1 to 8
    std::uint64_t heldBytes = 0; ///< while it is developed

    /// The format with both sides halved so often, 0 to maxHalvings.
    RowFormat halved(int halvings) const;
};

/// Fails with reason "unsupported" if the library does not know the camera.
Result<Negative> readNegative(const Functions& library, std::shared_ptr<const ByteReader> reader);

/// The largest preview that LibRaw finds, if it is a JPEG file that may be large enough for `sensor`; empty
/// if there is none.
Result<Bytes> previewOf(const Functions& library, std::shared_ptr<const ByteReader> reader, Sides sensor);

/// The developed picture: white balance of the camera, sRGB, brightness stretched until 1 % of the pixels are
/// white. `halvings` is 0 to maxHalvings. Damage after which LibRaw goes on is noted; data that end too early
/// are a failure.
Result<PixelBuffer> develop(const Functions& library, std::shared_ptr<const ByteReader> reader,
                            const Negative& negative, int halvings, DamageRecord& damage);

} // namespace kestrine::raw
