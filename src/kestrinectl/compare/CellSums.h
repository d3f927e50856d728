// CellSums: where in a picture something is found, such as detail or loss.
#pragma once

#include "kestrinectl/compare/LumaPlane.h"

#include <vector>

namespace kestrine {

/// A sum for each square cell of a picture. Cells at the right and lower edges may be smaller.
struct CellSums {
    static constexpr std::uint32_t side = 32; ///< of a cell, in pixels

    CellSums() = default;
    /// The cells of a picture of this size, in pixels; all sums are 0.
    CellSums(std::uint32_t pictureWidth, std::uint32_t pictureHeight)
        : width(pictureWidth), height(pictureHeight), columns((width + side - 1) / side),
          rows((height + side - 1) / side), sums(std::size_t{columns} * rows) {}

    double& at(std::uint32_t column, std::uint32_t row) { return sums[std::size_t{row} * columns + column]; }
    double at(std::uint32_t column, std::uint32_t row) const {
        return sums[std::size_t{row} * columns + column];
    }
    /// The cell of a pixel.
    double& ofPixel(std::uint32_t x, std::uint32_t y) { return at(x / side, y / side); }

    /// Adds the sums of a picture of the same size, or takes them over if there are none yet.
    void add(const CellSums& other);

    std::uint32_t width = 0, height = 0; ///< of the picture, in pixels
    std::uint32_t columns = 0, rows = 0;
    std::vector<double> sums;
};

/// How much neighbouring pixels differ.
CellSums detailOf(const LumaPlane& plane);

/// A square of cells within the picture, or as much of it as there is.
struct CellSquare {
    std::uint32_t column = 0, row = 0, columns = 0, rows = 0;

    bool overlaps(const CellSquare& other) const;
};

/// The square of `size` x `size` cells with the greatest sum that does not overlap `taken`, unless all do.
/// The first one of several.
CellSquare greatestSquare(const CellSums& cells, std::uint32_t size, const CellSquare& taken = {});

} // namespace kestrine
