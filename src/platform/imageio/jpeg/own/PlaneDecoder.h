// PlaneDecoder: a baseline JPEG as planes of samples as they are stored (grey, or Y, Cb and Cr), a band at a
// time. A band is a row of MCUs, so that what was decoded last is still in cache when it is used.
#pragma once

#include "platform/imageio/jpeg/own/EntropyDecoder.h"
#include "platform/imageio/jpeg/own/PlaneGeometry.h"

namespace kestrine::jpeg {

/// The samples of one component in the band decoded last, and one row before it. Rows have room for whole
/// groups of MCUs.
class Plane {
public:
    /// Readable bytes behind a row's samples, whose values mean nothing.
    static constexpr std::size_t padding = 64;

    const PlaneGeometry& geometry() const { return geometry_; }
    std::uint32_t rowsOfBand() const { return rowsOfBand_; }

    /// Row 0 is the band's first; -1 is the last one of the band before.
    const std::uint8_t* row(std::ptrdiff_t number) const {
        return samples_.data() + (number + 1) * static_cast<std::ptrdiff_t>(stride_);
    }

private:
    friend class PlaneDecoder;

    void prepare(const PlaneGeometry& geometry, const Component& component, std::uint32_t mcusAcross);

    PlaneGeometry geometry_;
    std::uint32_t rowsOfBand_ = 0;
    std::size_t stride_ = 0;
    Bytes samples_;
};

/// Decodes what readFrameHeader() takes; anything odd that shows later ends the work with reason "refused".
/// What was decoded before is exactly what the general library gives, for both read the same bits up to the
/// odd place, and nothing beyond an MCU has a part in its samples. May be started again and again, for any
/// files.
class PlaneDecoder {
public:
    /// Reads the header and goes to the first band. `eighths` is 8, 4, 2 or 1.
    Result<void> start(std::shared_ptr<const ByteReader> reader, int eighths);

    /// Size of the picture that the planes, expanded by their geometry and cut, make up.
    std::uint32_t width() const { return reducedSide(header_.width, eighths_); }
    std::uint32_t height() const { return reducedSide(header_.height, eighths_); }
    /// Rows of that picture in a band; the last band may have more than the picture.
    std::uint32_t rowsOfBand() const;
    std::uint32_t bands() const { return bands_; }
    std::uint32_t decodedBands() const { return decodedBands_; }
    std::span<const Plane> planes() const { return std::span(planes_).first(header_.componentCount); }

    /// Decodes the next band, of which there must be one.
    Result<void> decodeBand();

    /// Lets go of the file; the memory stays for the next one.
    void finish() { entropy_.finish(); }

private:
    void keepLastRows();
    void transformGroup(std::uint32_t firstMCU);

    FrameHeader header_;
    int eighths_ = 8;
    std::uint32_t mcusAcross_ = 0, bands_ = 0, decodedBands_ = 0;
    std::array<Plane, 3> planes_;
    EntropyDecoder entropy_;
};

} // namespace kestrine::jpeg
