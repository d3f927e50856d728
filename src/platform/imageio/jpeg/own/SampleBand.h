// SampleBand: the samples of a row of MCUs as they are stored (grey, or Y, Cb and Cr).
#pragma once

#include "platform/host/Bytes.h"
#include "platform/imageio/jpeg/own/PlaneGeometry.h"

#include <algorithm>
#include <array>
#include <span>

namespace kestrine::jpeg {

/// The samples of one component in a band, and the row before them. Rows have room for whole groups of MCUs.
class Plane {
public:
    /// Readable bytes after the samples of a row; their values are undefined.
    static constexpr std::size_t padding = 64;

    /// Prepares the plane for rows of `mcusAcross` MCUs, in groups of `lanes` MCUs.
    void prepare(const PlaneGeometry& geometry, const Component& component, std::size_t mcusAcross,
                 std::size_t lanes) {
        geometry_ = geometry;
        rowsPerBand_ = static_cast<std::uint32_t>(component.vertical * geometry.blockSize);
        stride_ = (mcusAcross + lanes - 1) / lanes * lanes
                      * static_cast<std::size_t>(component.horizontal * geometry.blockSize)
                  + padding;
        samples_.resize(stride_ * (rowsPerBand_ + 1));
    }

    const PlaneGeometry& geometry() const { return geometry_; }
    std::uint32_t rowsPerBand() const { return rowsPerBand_; }
    /// The distance from one row to the next, in bytes.
    std::size_t stride() const { return stride_; }

    /// Row 0 is the band's first; -1 is the last one of the band before.
    const std::uint8_t* row(std::ptrdiff_t number) const {
        return samples_.data() + (number + 1) * static_cast<std::ptrdiff_t>(stride_);
    }
    std::uint8_t* row(std::ptrdiff_t number) {
        return samples_.data() + (number + 1) * static_cast<std::ptrdiff_t>(stride_);
    }

    /// The band's last row. It is row -1 of the next band.
    std::span<const std::uint8_t> lastRow() const { return {row(std::ptrdiff_t{rowsPerBand_} - 1), stride_}; }
    void setRowBefore(std::span<const std::uint8_t> row) { std::ranges::copy(row, samples_.begin()); }

private:
    PlaneGeometry geometry_;
    std::uint32_t rowsPerBand_ = 0;
    std::size_t stride_ = 0;
    Bytes samples_;
};

struct SampleBand {
    std::array<Plane, 3> storage;
    std::size_t componentCount = 0;

    std::span<Plane> planes() { return std::span(storage).first(componentCount); }
    std::span<const Plane> planes() const { return std::span(storage).first(componentCount); }
};

} // namespace kestrine::jpeg
