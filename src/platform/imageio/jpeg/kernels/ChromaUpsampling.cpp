#include "platform/imageio/jpeg/kernels/ChromaUpsampling.h"

#include "platform/imageio/jpeg/kernels/ChromaUpsampling_reference.h"

#include <algorithm>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/imageio/jpeg/kernels/ChromaUpsampling.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kestrine::kernels::HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128 // without vectors

using reference::upsampleH1V2Fancy;
using reference::upsampleH2V1Fancy;
using reference::upsampleH2V2Fancy;

#else

namespace hn = hwy::HWY_NAMESPACE;

/// Samples as 16-bit numbers.
using Tag = hn::ScalableTag<std::uint16_t>;
using Numbers = hn::Vec<Tag>;

HWY_INLINE Numbers load(const std::uint8_t* samples) {
    return hn::PromoteTo(Tag(), hn::LoadU(hn::Rebind<std::uint8_t, Tag>(), samples));
}

HWY_INLINE Numbers threefold(Numbers value) { return hn::Add(hn::Add(value, value), value); }

HWY_INLINE Numbers rounded(Numbers value, std::uint16_t rounding) {
    return hn::Add(value, hn::Set(Tag(), rounding));
}

/// Stores two bytes per lane: `even`, then the upper byte of `oddTimes256`.
HWY_INLINE void storeTwins(Numbers even, Numbers oddTimes256, std::uint8_t* result) {
    const Numbers odd = hn::And(oddTimes256, hn::Set(Tag(), 0xFF00));
    const hn::Repartition<std::uint8_t, Tag> bytes;
    hn::StoreU(hn::BitCast(bytes, hn::Or(even, odd)), bytes, result);
}

/// Samples of one row.
struct OneRow {
    const std::uint8_t* row;

    HWY_INLINE Numbers at(std::size_t i) const { return load(row + i); }
    HWY_INLINE static void store(Numbers previous, Numbers sample, Numbers next, std::uint8_t* result) {
        const Numbers tripled = threefold(sample);
        storeTwins(hn::ShiftRight<2>(rounded(hn::Add(tripled, previous), 1)),
                   hn::ShiftLeft<6>(rounded(hn::Add(tripled, next), 2)), result);
    }
};

/// Weighted sums of two rows: four times a sample.
struct TwoRows {
    const std::uint8_t *nearRow, *farRow;

    HWY_INLINE Numbers at(std::size_t i) const {
        return hn::Add(threefold(load(nearRow + i)), load(farRow + i));
    }
    HWY_INLINE static void store(Numbers previous, Numbers sum, Numbers next, std::uint8_t* result) {
        const Numbers tripled = threefold(sum);
        storeTwins(hn::ShiftRight<4>(rounded(hn::Add(tripled, previous), 8)),
                   hn::ShiftLeft<4>(rounded(hn::Add(tripled, next), 7)), result);
    }
};

/// Stores two pixels for every sample except the first and the last one. Returns false, and stores nothing,
/// when these samples do not fill a vector. The last vector may overlap the one before.
template <class Rows>
HWY_INLINE bool storeInterior(const Rows& rows, std::size_t width, std::uint8_t* result) {
    const std::size_t lanes = hn::Lanes(Tag());
    if (width < lanes + 2)
        return false;
    const std::size_t last = width - 1 - lanes;
    for (std::size_t i = 1;; i = std::min(i + lanes, last)) {
        Rows::store(rows.at(i - 1), rows.at(i), rows.at(i + 1), result + 2 * i);
        if (i == last)
            return true;
    }
}

void upsampleH2V1Fancy(const std::uint8_t* row, std::size_t width, std::uint8_t* result) {
    if (!storeInterior(OneRow{row}, width, result))
        return reference::upsampleH2V1Fancy(row, width, result);
    const std::size_t last = width - 1;
    result[0] = row[0];
    result[1] = static_cast<std::uint8_t>((3 * row[0] + row[1] + 2) / 4);
    result[2 * last] = static_cast<std::uint8_t>((3 * row[last] + row[last - 1] + 1) / 4);
    result[2 * last + 1] = row[last];
}

void upsampleH2V2Fancy(const std::uint8_t* nearRow, const std::uint8_t* farRow, std::size_t width,
                       std::uint8_t* result) {
    if (!storeInterior(TwoRows{nearRow, farRow}, width, result))
        return reference::upsampleH2V2Fancy(nearRow, farRow, width, result);
    const auto sum = [nearRow, farRow](std::size_t i) { return 3 * nearRow[i] + farRow[i]; };
    const std::size_t last = width - 1;
    result[0] = static_cast<std::uint8_t>((4 * sum(0) + 8) / 16);
    result[1] = static_cast<std::uint8_t>((3 * sum(0) + sum(1) + 7) / 16);
    result[2 * last] = static_cast<std::uint8_t>((3 * sum(last) + sum(last - 1) + 8) / 16);
    result[2 * last + 1] = static_cast<std::uint8_t>((4 * sum(last) + 7) / 16);
}

void upsampleH1V2Fancy(const std::uint8_t* nearRow, const std::uint8_t* farRow, bool isUpper,
                       std::size_t width, std::uint8_t* result) {
    const hn::Rebind<std::uint8_t, Tag> bytes;
    const std::size_t lanes = hn::Lanes(bytes);
    const TwoRows rows = {nearRow, farRow};
    const std::uint16_t rounding = isUpper ? 1 : 2;
    std::size_t i = 0;
    for (; i + lanes <= width; i += lanes)
        hn::StoreU(hn::DemoteTo(bytes, hn::BitCast(hn::RebindToSigned<Tag>(),
                                                   hn::ShiftRight<2>(rounded(rows.at(i), rounding)))),
                   bytes, result + i);
    reference::upsampleH1V2Fancy(nearRow + i, farRow + i, isUpper, width - i, result + i);
}

#endif

} // namespace kestrine::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kestrine::kernels {

HWY_EXPORT(upsampleH2V1Fancy);
HWY_EXPORT(upsampleH2V2Fancy);
HWY_EXPORT(upsampleH1V2Fancy);

void upsampleH2V1Fancy(const std::uint8_t* row, std::size_t width, std::uint8_t* result) {
    HWY_DYNAMIC_DISPATCH(upsampleH2V1Fancy)(row, width, result);
}

void upsampleH2V2Fancy(const std::uint8_t* nearRow, const std::uint8_t* farRow, std::size_t width,
                       std::uint8_t* result) {
    HWY_DYNAMIC_DISPATCH(upsampleH2V2Fancy)(nearRow, farRow, width, result);
}

void upsampleH1V2Fancy(const std::uint8_t* nearRow, const std::uint8_t* farRow, bool isUpper,
                       std::size_t width, std::uint8_t* result) {
    HWY_DYNAMIC_DISPATCH(upsampleH1V2Fancy)(nearRow, farRow, isUpper, width, result);
}

namespace {

/// Repeats each sample as often as a Word has bytes.
template <class Word>
void replicateAs(const std::uint8_t* row, std::size_t width, std::uint8_t* result) {
    constexpr Word everyByte = static_cast<Word>(-1) / 0xFF;
    for (std::size_t i = 0; i < width; ++i) {
        const Word word = static_cast<Word>(row[i] * everyByte);
        std::memcpy(result + i * sizeof word, &word, sizeof word);
    }
}

} // namespace

void replicate(const std::uint8_t* row, std::size_t width, int times, std::uint8_t* result) {
    if (times == 2)
        return replicateAs<std::uint16_t>(row, width, result);
    if (times == 4)
        return replicateAs<std::uint32_t>(row, width, result);
    for (std::size_t i = 0; i < width; ++i)
        result = std::fill_n(result, times, row[i]);
}

} // namespace kestrine::kernels
#endif
