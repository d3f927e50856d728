// LibraryReader: reads a PNG file once with libpng: first the header, then the rows.
#pragma once

#include "platform/coregraphics/RowFormat.h"
#include "platform/imageio/ForwardReader.h"
#include "platform/imageio/png/Library.h"

#include <array>

namespace kestrine::png {

class LibraryReader {
public:
    /// Whether cHRM, gAMA and sRGB are read beside a profile.
    enum class Calibration : std::uint8_t { read, skipped };

    explicit LibraryReader(std::shared_ptr<const ByteReader> reader,
                           Calibration calibration = Calibration::read);
    ~LibraryReader();
    LibraryReader(const LibraryReader&) = delete;
    LibraryReader& operator=(const LibraryReader&) = delete;

    /// Reads up to the pixels. They will be delivered with indices as colours, a transparent colour as alpha,
    /// grey below 8 bits as 8 bits, and 16-bit samples in the machine's byte order.
    Result<void> readHeader();

    // The following functions need the header to be read.

    /// The format of the delivered rows.
    RowFormat format() const;
    /// Whether the stored colours are indices into a table.
    bool isIndexed() const { return storedColorType_ == PNG_COLOR_TYPE_PALETTE; }
    /// Whether the rows come in seven passes, each with a part of the pixels.
    bool isInterlaced() const;
    /// Uncompressed size of the stored rows, each with its filter byte.
    std::uint64_t storedBytes() const;
    std::size_t storedBitsPerPixel() const { return storedBitsPerPixel_; }
    /// Bytes per stored pixel, at least 1, as the row filters count them.
    std::size_t storedBytesPerPixel() const { return (storedBitsPerPixel_ + 7) / 8; }
    /// Whether pixels are delivered as they are stored, except for the byte order of 16-bit samples.
    bool deliversAsStored() const;
    /// Whether each stored pixel is an index of 8 bits.
    bool isIndexedByBytes() const { return isIndexed() && storedBitsPerPixel_ == 8; }
    /// The alpha of each index, 255 by default.
    const std::array<std::uint8_t, 256>& alphaOfIndices() const { return alphaOfIndices_; }
    /// Whether a damaged chunk was skipped that defines transparency.
    bool lacksTransparency() const { return message_.lacksTransparency; }
    /// Whether the chunks about colours contradict each other, so that libpng also forgets a profile.
    bool lacksColors() const { return message_.lacksColors; }
    /// Offset of the first IDAT chunk in the file.
    std::uint64_t offsetOfPixels() const { return offsetOfPixels_; }
    /// The structures for libpng's functions that read chunks. Owned by this reader.
    png_structp png() const { return png_; }
    png_infop info() const { return info_; }

    /// Reads the next row; if the picture is interlaced, the next one that is not empty of its seven passes.
    Result<void> readRow(std::span<std::uint8_t> row);
    /// Reads everything after the last row, in order to find damage.
    Result<void> finish();

private:
    template <class Step>
    Result<void> run(const Step& step);
    /// Must be called before libpng is set to turn indices into colours.
    void readAlphaOfIndices();

    Message message_;
    const Calibration calibration_;
    ForwardReader input_;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
    std::uint8_t storedColorType_ = 0;
    std::uint64_t storedRowBytes_ = 0;
    std::size_t storedBitsPerPixel_ = 0;
    std::uint64_t offsetOfPixels_ = 0;
    std::array<std::uint8_t, 256> alphaOfIndices_;
};

} // namespace kestrine::png
