// PlaneDecoder: decodes a JPEG into planes of samples as they are stored (grey, or Y, Cb and Cr),
// one band at a time. A band is a row of MCUs, so that its samples are still in the cache when they are used.
#pragma once

#include "platform/imageio/jpeg/own/EntropyDecoder.h"
#include "platform/imageio/jpeg/own/PlaneGeometry.h"
#include "platform/imageio/jpeg/own/ProgressiveDecoder.h"

namespace kestrine::jpeg {

/// The samples of one component in the last decoded band, and the row before it. Rows have room for whole
/// groups of MCUs.
class Plane {
public:
    /// Readable bytes after the samples of a row; their values are undefined.
    static constexpr std::size_t padding = 64;

    const PlaneGeometry& geometry() const { return geometry_; }
    std::uint32_t rowsPerBand() const { return rowsPerBand_; }

    /// Row 0 is the band's first; -1 is the last one of the band before.
    const std::uint8_t* row(std::ptrdiff_t number) const {
        return samples_.data() + (number + 1) * static_cast<std::ptrdiff_t>(stride_);
    }

private:
    friend class PlaneDecoder;

    void prepare(const PlaneGeometry& geometry, const Component& component, std::uint32_t mcusAcross);

    PlaneGeometry geometry_;
    std::uint32_t rowsPerBand_ = 0;
    std::size_t stride_ = 0;
    Bytes samples_;
};

/// Decodes the files that frameHeaderOf() accepts. Fails with reason "refused" where the scan is damaged or
/// unusual; the bands decoded before equal those of libjpeg-turbo (OwnRows.h explains why). Can be
/// started any number of times, for different files.
class PlaneDecoder {
public:
    /// Prepares for the first band of the file that has this header. `eighths` is 8, 4, 2 or 1.
    Result<void> start(std::shared_ptr<const ByteReader> reader, const FrameHeader& header, int eighths);

    /// Size of the picture in pixels.
    std::uint32_t width() const { return reducedSide(header_.width, eighths_); }
    std::uint32_t height() const { return reducedSide(header_.height, eighths_); }
    /// Rows of the picture per band; the last band may extend past the bottom of the picture.
    std::uint32_t rowsPerBand() const;
    std::uint32_t bands() const { return bands_; }
    std::uint32_t decodedBands() const { return decodedBands_; }
    std::span<const Plane> planes() const { return std::span(planes_).first(header_.componentCount); }

    /// Decodes the next band. decodedBands() must be less than bands().
    Result<void> decodeBand();

    /// Releases the file; keeps the memory for the next one.
    void finish();

private:
    void keepLastRows();
    Result<void> decodeSequential();
    Result<void> decodeProgressive();
    void transformGroup(std::uint32_t firstMCU);
    bool decodeRow(std::size_t component, std::uint32_t row);
    void transformStrip(std::size_t component, std::uint32_t row, std::uint32_t firstGroup);

    FrameHeader header_;
    int eighths_ = 8;
    std::uint32_t mcusAcross_ = 0, bands_ = 0, decodedBands_ = 0;
    std::array<Plane, 3> planes_;
    EntropyDecoder entropy_;
    std::unique_ptr<ProgressiveDecoder> progressive_; ///< null unless the file is progressive
};

} // namespace kestrine::jpeg
