#include "kestrinectl/compare/CellSums.h"

#include <algorithm>
#include <cmath>
#include <functional>

namespace kestrine {

namespace {

double sumIn(const CellSums& cells, const CellSquare& square) {
    double sum = 0;
    for (std::uint32_t row = square.row; row < square.row + square.rows; ++row)
        for (std::uint32_t column = square.column; column < square.column + square.columns; ++column)
            sum += cells.at(column, row);
    return sum;
}

} // namespace

void CellSums::add(const CellSums& other) {
    if (sums.empty())
        *this = other;
    else if (other.width == width && other.height == height)
        std::ranges::transform(sums, other.sums, sums.begin(), std::plus());
}

CellSums detailOf(const LumaPlane& plane) {
    CellSums detail(plane.width, plane.height);
    for (std::uint32_t y = 0; y + 1 < plane.height; ++y) {
        const float *row = plane.row(y), *next = plane.row(y + 1);
        for (std::uint32_t x = 0; x + 1 < plane.width; ++x)
            detail.ofPixel(x, y) += std::abs(row[x + 1] - row[x]) + std::abs(next[x] - row[x]);
    }
    return detail;
}

bool CellSquare::overlaps(const CellSquare& other) const {
    return column < other.column + other.columns && other.column < column + columns
           && row < other.row + other.rows && other.row < row + rows;
}

CellSquare greatestSquare(const CellSums& cells, std::uint32_t size, const CellSquare& taken) {
    CellSquare square = {0, 0, std::min(size, cells.columns), std::min(size, cells.rows)};
    CellSquare best = square;
    double greatest = -1;
    for (square.row = 0; square.row + square.rows <= cells.rows; ++square.row)
        for (square.column = 0; square.column + square.columns <= cells.columns; ++square.column)
            if (const double sum = sumIn(cells, square); sum > greatest && !square.overlaps(taken)) {
                best = square;
                greatest = sum;
            }
    return best;
}

} // namespace kestrine
