// Shared by the inverse transforms of every size: loads the coefficients of a group into vectors and stores
// vectors as squares of samples. Included once per vector target. A vector holds the values of one position
// of a block for eight or sixteen lanes, or those of two neighbouring positions for sixteen lanes.

#if defined(KESTRINE_INVERSE_DCT_VECTORS) == defined(HWY_TARGET_TOGGLE)
#ifdef KESTRINE_INVERSE_DCT_VECTORS
#undef KESTRINE_INVERSE_DCT_VECTORS
#else
#define KESTRINE_INVERSE_DCT_VECTORS
#endif

#include "platform/coregraphics/kernels/WeightedSums-inl.h"
#include "platform/imageio/jpeg/kernels/InverseDCT.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kestrine::kernels::HWY_NAMESPACE {

using Tag8 = hn::Repartition<std::int8_t, Tag16>;
using Int8 = hn::Vec<Tag8>;
constexpr Tag8 d8;

/// Positions per vector, and lanes per position.
constexpr int positionsAtOnce = std::max(1, vectorWidth / dctLanes);
constexpr int lanesAtOnce = std::min(vectorWidth, dctLanes);

/// The coefficients of column x (and of the next column, if a vector holds two positions) times their
/// quantisers.
class DequantisedColumn {
public:
    HWY_INLINE DequantisedColumn(const std::int16_t* group, const std::uint16_t* quantisation, int x,
                                 int lane)
        : coefficients_(group + x * dctLanes + lane),
          quantisers_(reinterpret_cast<const std::int16_t*>(quantisation)),
          bytes_(hn::Add(hn::Set(d16, static_cast<std::int16_t>(firstColumn + x * nextColumn)),
                         hn::Load(d16, columnSteps.data()))) {}

    HWY_INLINE Int16 operator[](int y) const {
        const Int16 row = hn::LoadDup128(d16, quantisers_ + y * 8);
        return hn::Mul(hn::LoadU(d16, coefficients_ + y * 8 * dctLanes), hn::TableLookupBytes(row, bytes_));
    }

private:
    /// Indexes of the two bytes of the quantiser of column 0 in a row of eight, and the step to the next
    /// column.
    static constexpr int firstColumn = 0x0100, nextColumn = 0x0202;
    alignas(64) static constexpr std::array<std::int16_t, 2 * dctLanes> columnSteps = [] {
        std::array<std::int16_t, 2 * dctLanes> steps{};
        std::fill(steps.begin() + dctLanes, steps.end(), nextColumn);
        return steps;
    }();

    const std::int16_t* coefficients_;
    const std::int16_t* quantisers_;
    Int16 bytes_;
};

/// The result of the first pass, rows of eight columns. The lanes of row y in column x are at (x * rows + y)
/// * dctLanes, because the second pass loads two rows at once if a vector has room for them.
template <int rows>
struct Columns {
    alignas(64) std::int16_t values[8 * rows * dctLanes];

    HWY_INLINE std::int16_t* at(int x, int y) { return values + (x * rows + y) * dctLanes; }
    HWY_INLINE const std::int16_t* at(int x, int y) const { return values + (x * rows + y) * dctLanes; }

    /// `column` has one vector per row.
    HWY_INLINE void store(int x, int lane, const Int16* column) {
        if constexpr (positionsAtOnce == 1) {
#pragma GCC unroll 8
            for (int y = 0; y < rows; ++y)
                hn::StoreU(column[y], d16, at(x, y) + lane);
        } else {
#pragma GCC unroll 4
            for (int y = 0; y < rows; y += 2) {
                hn::StoreU(hn::ConcatLowerLower(d16, column[y + 1], column[y]), d16, at(x, y));
                hn::StoreU(hn::ConcatUpperUpper(d16, column[y + 1], column[y]), d16, at(x + 1, y));
            }
        }
    }
};

/// The destination of the samples.
struct Squares {
    std::uint8_t* output;
    std::ptrdiff_t laneStride, rowStride;
};

/// Each block of 16 bytes holds eight lanes of a, then the same lanes of b, saturated to -128..127.
HWY_INLINE Int8 packed(Int16 a, Int16 b) {
#if HWY_TARGET == HWY_AVX3
    return Int8{_mm512_packs_epi16(a.raw, b.raw)};
#elif HWY_TARGET == HWY_AVX2
    return Int8{_mm256_packs_epi16(a.raw, b.raw)};
#elif HWY_TARGET == HWY_SSE4
    return Int8{_mm_packs_epi16(a.raw, b.raw)};
#else
    const hn::Half<Tag8> half;
    return hn::Combine(d8, hn::DemoteTo(half, b), hn::DemoteTo(half, a));
#endif
}

/// Interleaves the values (of type T) of a and b: `first` gets the first half of every block, `second` the
/// second half.
template <class T>
HWY_INLINE void interleave(Int8 a, Int8 b, Int8& first, Int8& second) {
    const hn::Repartition<T, Tag8> d;
    first = hn::BitCast(d8, hn::InterleaveLower(d, hn::BitCast(d, a), hn::BitCast(d, b)));
    second = hn::BitCast(d8, hn::InterleaveUpper(d, hn::BitCast(d, a), hn::BitCast(d, b)));
}

/// Places the values of each lane side by side. `row` has one vector for each of `size` positions; each block
/// of 16 bytes of the result holds 16 / size lanes.
template <int size>
HWY_INLINE void gatherLanes(const Int16* row, Int8* result) {
    if constexpr (size == 1) {
        result[0] = packed(row[0], row[0]);
    } else if constexpr (size == 2) {
        result[0] = hn::InterleaveLower(d8, packed(row[0], row[0]), packed(row[1], row[1]));
    } else if constexpr (size == 4) {
        Int8 left, right;
        interleave<std::int8_t>(packed(row[0], row[2]), packed(row[1], row[3]), left, right);
        interleave<std::int16_t>(left, right, result[0], result[1]);
    } else {
        Int8 v01, v23, v45, v67, left[2], right[2];
        interleave<std::int8_t>(packed(row[0], row[4]), packed(row[1], row[5]), v01, v45);
        interleave<std::int8_t>(packed(row[2], row[6]), packed(row[3], row[7]), v23, v67);
        interleave<std::int16_t>(v01, v23, left[0], left[1]);
        interleave<std::int16_t>(v45, v67, right[0], right[1]);
        interleave<std::int32_t>(left[0], right[0], result[0], result[1]);
        interleave<std::int32_t>(left[1], right[1], result[2], result[3]);
    }
}

/// Writes row y of the squares from `lane` on (and the next row, if a vector holds two positions). The
/// samples are the values of `row` plus 128. Adjacent squares are written 16 bytes at a time.
template <int size, bool touching>
HWY_INLINE void storeRow(const Int16* row, const Squares& squares, int lane, int y) {
    constexpr int vectors = std::max(1, size / 2), blocks = vectorWidth / 8;
    constexpr int blocksOfRows = std::min(blocks, size * dctLanes / 8);
    Int8 gathered[vectors];
    gatherLanes<size>(row, gathered);
    alignas(64) std::int8_t bytes[vectors][blocks][16];
#pragma GCC unroll 4
    for (int v = 0; v < vectors; ++v)
        hn::Store(hn::Xor(gathered[v], hn::Set(d8, -128)), d8, bytes[v][0]);

    constexpr int chunk = touching ? std::min(16, 8 * size) : size;
#pragma GCC unroll 4
    for (int block = 0; block < blocksOfRows; ++block) {
        std::uint8_t* target = squares.output + (lane + block % 2 * 8) * squares.laneStride
                               + (y + block / 2) * squares.rowStride;
#pragma GCC unroll 8
        for (int i = 0; i < 8; i += chunk / size)
            std::memcpy(target + i * squares.laneStride, bytes[i * size / 16][block] + i * size % 16, chunk);
    }
}

} // namespace kestrine::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
