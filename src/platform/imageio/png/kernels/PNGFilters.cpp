#include "platform/imageio/png/kernels/PNGFilters.h"

#include "platform/imageio/png/kernels/PNGFilters_reference.h"

#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/imageio/png/kernels/PNGFilters.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kestrine::kernels::HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR // without vectors

using reference::filterPNGRow;
using reference::pngFilterSums;
using reference::unfilterPaethRows;
using reference::unfilterPNGRow;

#else

namespace hn = hwy::HWY_NAMESPACE;

// Unfiltering handles one pixel at a time as a vector of eight bytes. The bytes after the pixel itself are
// overwritten by the following pixels.
using PixelTag = hn::FixedTag<std::uint8_t, 8>;
using WidePixelTag = hn::FixedTag<std::int16_t, 8>;
using Pixel = hn::Vec<PixelTag>;
using WidePixel = hn::Vec<WidePixelTag>;

template <class V>
HWY_INLINE V halfOfSum(V a, V b) {
    const hn::DFromV<V> d;
    return hn::Sub(hn::AverageRound(a, b), hn::And(hn::Xor(a, b), hn::Set(d, 1))); // AverageRound rounds up
}

template <std::size_t bytesPerPixel>
void unfilterSub(const std::uint8_t* filtered, std::uint8_t* row, std::size_t count) {
    const PixelTag d;
    Pixel left = hn::Zero(d);
    for (std::size_t i = 0; i < count; i += bytesPerPixel) {
        left = hn::Add(left, hn::LoadU(d, filtered + i));
        hn::StoreU(left, d, row + i);
    }
}

/// Works on the complement of the left pixel: the complement of (left + above) / 2, rounded down, is the mean
/// of the complements, rounded up, which is a single operation.
template <std::size_t bytesPerPixel>
void unfilterAverage(const std::uint8_t* filtered, const std::uint8_t* above, std::uint8_t* row,
                     std::size_t count) {
    const PixelTag d;
    Pixel left = hn::Set(d, 255);
    for (std::size_t i = 0; i < count; i += bytesPerPixel) {
        const Pixel mean = hn::AverageRound(left, hn::Not(hn::LoadU(d, above + i)));
        left = hn::Sub(mean, hn::LoadU(d, filtered + i));
        hn::StoreU(hn::Not(left), d, row + i);
    }
}

void unfilterUp(const std::uint8_t* filtered, const std::uint8_t* above, std::uint8_t* row,
                std::size_t count) {
    const hn::ScalableTag<std::uint8_t> d;
    const std::size_t lanes = hn::Lanes(d);
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes)
        hn::StoreU(hn::Add(hn::LoadU(d, filtered + i), hn::LoadU(d, above + i)), d, row + i);
    for (; i < count; ++i)
        row[i] = static_cast<std::uint8_t>(filtered[i] + above[i]);
}

/// What the next pixel of a row with the paeth filter needs of the previous pixels.
struct PaethState {
    WidePixel left, aboveLeft;
};

/// Unfilters the next pixel. With t = 3 * aboveLeft - left - above, the prediction is the smaller of left and
/// above if t is at least the larger one, the larger one if t is at most the smaller one, and otherwise
/// aboveLeft. This form has the shortest chain of operations that depend on the left pixel.
HWY_INLINE WidePixel paethStep(PaethState& state, WidePixel above, const std::uint8_t* filtered) {
    const WidePixelTag d;
    const auto aboveLeft = state.aboveLeft, left = state.left;
    const auto tripled = hn::Add(hn::Add(aboveLeft, aboveLeft), hn::Sub(aboveLeft, above));
    const auto threshold = hn::Sub(tripled, left);
    const auto low = hn::Min(left, above), high = hn::Max(left, above);
    const auto first = hn::IfThenElse(hn::Gt(high, threshold), aboveLeft, low);
    const auto predicted = hn::IfThenElse(hn::Gt(threshold, low), first, high);
    const auto difference = hn::PromoteTo(d, hn::LoadU(PixelTag(), filtered));
    state.left = hn::And(hn::Add(predicted, difference), hn::Set(d, 255));
    state.aboveLeft = above;
    return state.left;
}

HWY_INLINE WidePixel loadPixel(const std::uint8_t* pixel) {
    return hn::PromoteTo(WidePixelTag(), hn::LoadU(PixelTag(), pixel));
}

HWY_INLINE void storePixel(WidePixel pixel, std::uint8_t* to) {
    hn::StoreU(hn::DemoteTo(PixelTag(), pixel), PixelTag(), to);
}

/// Each row is processed one pixel later than the row above it, whose state therefore holds the pixel above.
template <std::size_t bytesPerPixel, std::size_t rowCount>
void unfilterPaethTogether(const PaethRows& job, std::size_t count) {
    const WidePixelTag d;
    const WidePixel zero = hn::Zero(d);
    PaethState first{zero, zero}, second = first, third = first, fourth = first;
    const auto step = [&]<std::size_t row>(PaethState& state, std::size_t i, const auto& above) {
        if (row < rowCount && i >= row * bytesPerPixel && i < count + row * bytesPerPixel) {
            const std::size_t at = i - row * bytesPerPixel;
            storePixel(paethStep(state, above(at), job.filtered[row] + at), job.rows[row] + at);
        }
    };
    const std::size_t end = count + (rowCount - 1) * bytesPerPixel;
    for (std::size_t i = 0; i < end; i += bytesPerPixel) {
        step.template operator()<3>(fourth, i, [&](std::size_t) { return third.left; });
        step.template operator()<2>(third, i, [&](std::size_t) { return second.left; });
        step.template operator()<1>(second, i, [&](std::size_t) { return first.left; });
        step.template operator()<0>(first, i, [&](std::size_t at) { return loadPixel(job.above + at); });
    }
}

/// Calls `run` with the bytes per pixel as a compile-time constant.
template <class Run>
void withPixelSize(std::size_t bytesPerPixel, const Run& run) {
    switch (bytesPerPixel) {
    case 1:
        return run(std::integral_constant<std::size_t, 1>());
    case 2:
        return run(std::integral_constant<std::size_t, 2>());
    case 3:
        return run(std::integral_constant<std::size_t, 3>());
    case 4:
        return run(std::integral_constant<std::size_t, 4>());
    case 6:
        return run(std::integral_constant<std::size_t, 6>());
    default:
        return run(std::integral_constant<std::size_t, 8>());
    }
}

void unfilterPNGRow(PNGFilter filter, std::size_t bytesPerPixel, const std::uint8_t* filtered,
                    const std::uint8_t* above, std::uint8_t* row, std::size_t count) {
    withPixelSize(bytesPerPixel, [&](auto size) {
        switch (filter) {
        case PNGFilter::none:
            std::memcpy(row, filtered, count);
            return;
        case PNGFilter::sub:
            return unfilterSub<size>(filtered, row, count);
        case PNGFilter::up:
            return unfilterUp(filtered, above, row, count);
        case PNGFilter::average:
            return unfilterAverage<size>(filtered, above, row, count);
        case PNGFilter::paeth:
            return unfilterPaethTogether<size, 1>({1, {filtered}, above, {row}}, count);
        }
    });
}

void unfilterPaethRows(std::size_t bytesPerPixel, const PaethRows& job, std::size_t count) {
    withPixelSize(bytesPerPixel, [&](auto size) {
        switch (job.rowCount) {
        case 1:
            return unfilterPaethTogether<size, 1>(job, count);
        case 2:
            return unfilterPaethTogether<size, 2>(job, count);
        case 3:
            return unfilterPaethTogether<size, 3>(job, count);
        default:
            return unfilterPaethTogether<size, 4>(job, count);
        }
    });
}

/// The paeth prediction for a vector of bytes whose neighbours are all known. All distances fit a byte: if
/// left and above lie on the same side of aboveLeft, the distance to aboveLeft is the sum of the other two,
/// which may saturate because it is never the smallest; otherwise it is their difference.
template <class V>
HWY_INLINE V paethPrediction(V left, V above, V aboveLeft) {
    const auto distance = [](V a, V b) { return hn::Sub(hn::Max(a, b), hn::Min(a, b)); };
    const auto isAtLeast = [](V a, V b) { return hn::Eq(hn::Max(a, b), a); };
    const hn::DFromV<V> d;
    const V toLeft = distance(above, aboveLeft), toAbove = distance(left, aboveLeft);
    const V sides = hn::Xor(hn::VecFromMask(d, isAtLeast(left, aboveLeft)),
                            hn::VecFromMask(d, isAtLeast(above, aboveLeft)));
    const V toAboveLeft =
        hn::IfVecThenElse(sides, distance(toLeft, toAbove), hn::SaturatedAdd(toLeft, toAbove));
    const V otherThanLeft = hn::IfThenElse(isAtLeast(toAboveLeft, toAbove), above, aboveLeft);
    return hn::IfThenElse(isAtLeast(hn::Min(toAbove, toAboveLeft), toLeft), left, otherThanLeft);
}

/// A vector of bytes minus the prediction of the filter.
template <class V>
HWY_INLINE V remainder(PNGFilter filter, V byte, V left, V above, V aboveLeft) {
    switch (filter) {
    case PNGFilter::none:
        return byte;
    case PNGFilter::sub:
        return hn::Sub(byte, left);
    case PNGFilter::up:
        return hn::Sub(byte, above);
    case PNGFilter::average:
        return hn::Sub(byte, halfOfSum(left, above));
    default:
        return hn::Sub(byte, paethPrediction(left, above, aboveLeft));
    }
}

std::array<std::uint64_t, pngFilters> pngFilterSums(std::size_t bytesPerPixel, const std::uint8_t* row,
                                                    const std::uint8_t* above, std::size_t count) {
    const hn::ScalableTag<std::uint8_t> d;
    const hn::Repartition<std::uint64_t, decltype(d)> wide;
    const std::size_t lanes = hn::Lanes(d);
    auto none = hn::Zero(wide), sub = none, up = none, average = none, paeth = none;
    const auto zero = hn::Zero(d);
    const auto add = [&](auto& sum, auto difference) {
        sum = hn::Add(sum, hn::SumsOf8(hn::Min(difference, hn::Sub(zero, difference))));
    };
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes) {
        const auto byte = hn::LoadU(d, row + i), left = hn::LoadU(d, row + i - bytesPerPixel);
        const auto up1 = hn::LoadU(d, above + i), upLeft = hn::LoadU(d, above + i - bytesPerPixel);
        add(none, byte);
        add(sub, hn::Sub(byte, left));
        add(up, hn::Sub(byte, up1));
        add(average, hn::Sub(byte, halfOfSum(left, up1)));
        add(paeth, hn::Sub(byte, paethPrediction(left, up1, upLeft)));
    }
    auto sums = reference::pngFilterSums(bytesPerPixel, row + i, above + i, count - i);
    const auto total = [&](auto sum) { return hn::GetLane(hn::SumOfLanes(wide, sum)); };
    sums[0] += total(none);
    sums[1] += total(sub);
    sums[2] += total(up);
    sums[3] += total(average);
    sums[4] += total(paeth);
    return sums;
}

void filterPNGRow(PNGFilter filter, std::size_t bytesPerPixel, const std::uint8_t* row,
                  const std::uint8_t* above, std::uint8_t* filtered, std::size_t count) {
    const hn::ScalableTag<std::uint8_t> d;
    const std::size_t lanes = hn::Lanes(d);
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes) {
        const auto byte = hn::LoadU(d, row + i), left = hn::LoadU(d, row + i - bytesPerPixel);
        const auto up = hn::LoadU(d, above + i), upLeft = hn::LoadU(d, above + i - bytesPerPixel);
        hn::StoreU(remainder(filter, byte, left, up, upLeft), d, filtered + i);
    }
    reference::filterPNGRow(filter, bytesPerPixel, row + i, above + i, filtered + i, count - i);
}

#endif

} // namespace kestrine::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kestrine::kernels {

HWY_EXPORT(unfilterPNGRow);
HWY_EXPORT(unfilterPaethRows);
HWY_EXPORT(pngFilterSums);
HWY_EXPORT(filterPNGRow);

void unfilterPNGRow(PNGFilter filter, std::size_t bytesPerPixel, const std::uint8_t* filtered,
                    const std::uint8_t* above, std::uint8_t* row, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(unfilterPNGRow)(filter, bytesPerPixel, filtered, above, row, count);
}

void unfilterPaethRows(std::size_t bytesPerPixel, const PaethRows& job, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(unfilterPaethRows)(bytesPerPixel, job, count);
}

std::array<std::uint64_t, pngFilters> pngFilterSums(std::size_t bytesPerPixel, const std::uint8_t* row,
                                                    const std::uint8_t* above, std::size_t count) {
    return HWY_DYNAMIC_DISPATCH(pngFilterSums)(bytesPerPixel, row, above, count);
}

void filterPNGRow(PNGFilter filter, std::size_t bytesPerPixel, const std::uint8_t* row,
                  const std::uint8_t* above, std::uint8_t* filtered, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(filterPNGRow)(filter, bytesPerPixel, row, above, filtered, count);
}

} // namespace kestrine::kernels
#endif
