// StoredColors: what a PNG file states about the colours of its pixels.
#pragma once

#include "platform/coregraphics/ColorProfile.h"
#include "platform/coregraphics/ToneMapping.h"
#include "platform/imageio/exif/ExifFacts.h"
#include "platform/imageio/png/ChunkSearch.h"
#include "platform/imageio/png/LibraryReader.h"

namespace kestrine::png {

struct StoredColors {
    std::optional<ColorProfile> profile; ///< nullopt: sRGB
    std::optional<HDREncoding> hdr;      ///< of an HDR picture, which becomes SDR
    Bytes table; ///< red, green and blue of each index; empty if the pixels are not indices
};

/// The chunks about colours that libpng does not read.
struct ColorChunks {
    std::optional<Chunk> codingPoints; ///< cICP
    std::optional<Chunk> lightLevel;   ///< cLLI
};

/// The header of `file` must have been read. `chunks` and `exif` were found before its pixels, in `bytes`.
StoredColors storedColors(const LibraryReader& file, const ByteReader& bytes, const ColorChunks& chunks,
                          const ExifFacts& exif);

} // namespace kestrine::png
