#include "platform/imageio/jpeg/kernels/ChromaUpsampling_reference.h"

#include <algorithm>

namespace kestrine::kernels::reference {

namespace {

/// Calls `store(i, previous, sample, next)` for each sample of a row.
template <class Row, class Store>
void withNeighbours(const Row& at, std::size_t width, const Store& store) {
    for (std::size_t i = 0; i < width; ++i)
        store(i, at(i == 0 ? 0 : i - 1), at(i), at(std::min(i + 1, width - 1)));
}

std::uint8_t narrowed(int value) { return static_cast<std::uint8_t>(value); }

} // namespace

void upsampleH2V1Fancy(const std::uint8_t* row, std::size_t width, std::uint8_t* result) {
    const auto at = [row](std::size_t i) { return int{row[i]}; };
    withNeighbours(at, width, [result](std::size_t i, int previous, int sample, int next) {
        result[2 * i] = narrowed((3 * sample + previous + 1) / 4);
        result[2 * i + 1] = narrowed((3 * sample + next + 2) / 4);
    });
}

void upsampleH2V2Fancy(const std::uint8_t* nearRow, const std::uint8_t* farRow, std::size_t width,
                       std::uint8_t* result) {
    const auto at = [nearRow, farRow](std::size_t i) { return 3 * nearRow[i] + farRow[i]; };
    withNeighbours(at, width, [result](std::size_t i, int previous, int sample, int next) {
        result[2 * i] = narrowed((3 * sample + previous + 8) / 16);
        result[2 * i + 1] = narrowed((3 * sample + next + 7) / 16);
    });
}

void upsampleH1V2Fancy(const std::uint8_t* nearRow, const std::uint8_t* farRow, bool isUpper,
                       std::size_t width, std::uint8_t* result) {
    for (std::size_t i = 0; i < width; ++i)
        result[i] = narrowed((3 * nearRow[i] + farRow[i] + (isUpper ? 1 : 2)) / 4);
}

} // namespace kestrine::kernels::reference
