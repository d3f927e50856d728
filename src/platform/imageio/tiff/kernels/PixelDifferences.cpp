#include "platform/imageio/tiff/kernels/PixelDifferences.h"

#include "platform/imageio/tiff/kernels/PixelDifferences_reference.h"

#include <array>
#include <type_traits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/imageio/tiff/kernels/PixelDifferences.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kestrine::kernels::HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR // without vectors

using reference::undoPixelDifferences;

#else

namespace hn = hwy::HWY_NAMESPACE;

using ByteBlock = hn::FixedTag<std::uint8_t, 16>;
constexpr std::size_t blockBytes = 16;

/// Adds to each sample of a block those of the pixels before it in the same block: the distances are one
/// pixel, two, four and eight.
template <std::size_t pixelBytes, class D>
HWY_INLINE hn::Vec<D> sumsWithinBlock(D d, hn::Vec<D> block) {
    const ByteBlock bytes;
    const auto moved = [&](auto distance) {
        return hn::BitCast(d, hn::ShiftLeftBytes<distance>(bytes, hn::BitCast(bytes, block)));
    };
    block = hn::Add(block, moved(std::integral_constant<int, pixelBytes>()));
    if constexpr (2 * pixelBytes < blockBytes)
        block = hn::Add(block, moved(std::integral_constant<int, 2 * pixelBytes>()));
    if constexpr (4 * pixelBytes < blockBytes)
        block = hn::Add(block, moved(std::integral_constant<int, 4 * pixelBytes>()));
    if constexpr (8 * pixelBytes < blockBytes)
        block = hn::Add(block, moved(std::integral_constant<int, 8 * pixelBytes>()));
    return block;
}

template <class Sample, std::size_t samplesPerPixel>
void undoDifferencesInBlocks(std::uint8_t* row, std::size_t count) {
    constexpr std::size_t pixelBytes = samplesPerPixel * sizeof(Sample);
    const ByteBlock bytes;
    const hn::Repartition<Sample, ByteBlock> d;
    // For each byte of a block, which byte of the block before belongs to the same sample of the last pixel.
    alignas(blockBytes) std::array<std::uint8_t, blockBytes> places{};
    for (std::size_t i = 0; i < blockBytes; ++i)
        places[i] = static_cast<std::uint8_t>(blockBytes - pixelBytes + i % pixelBytes);
    const auto lastPixel = hn::Load(bytes, places.data());
    auto before = hn::Zero(d);
    std::size_t at = 0;
    for (; at + blockBytes <= count; at += blockBytes) {
        const auto differences = hn::BitCast(d, hn::LoadU(bytes, row + at));
        const auto samples = hn::BitCast(bytes, hn::Add(sumsWithinBlock<pixelBytes>(d, differences), before));
        hn::StoreU(samples, bytes, row + at);
        before = hn::BitCast(d, hn::TableLookupBytes(samples, lastPixel));
    }
    const std::size_t done = at < pixelBytes ? 0 : at - pixelBytes;
    reference::undoPixelDifferences(row + done, count - done, sizeof(Sample), samplesPerPixel);
}

template <class Sample>
void undoDifferencesOf(std::uint8_t* row, std::size_t count, std::size_t samplesPerPixel) {
    switch (samplesPerPixel) {
    case 1:
        return undoDifferencesInBlocks<Sample, 1>(row, count);
    case 2:
        return undoDifferencesInBlocks<Sample, 2>(row, count);
    case 3:
        return undoDifferencesInBlocks<Sample, 3>(row, count);
    case 4:
        return undoDifferencesInBlocks<Sample, 4>(row, count);
    default:
        return reference::undoPixelDifferences(row, count, sizeof(Sample), samplesPerPixel);
    }
}

void undoPixelDifferences(std::uint8_t* row, std::size_t count, std::size_t bytesPerSample,
                          std::size_t samplesPerPixel) {
    if (bytesPerSample == 1)
        undoDifferencesOf<std::uint8_t>(row, count, samplesPerPixel);
    else
        undoDifferencesOf<std::uint16_t>(row, count, samplesPerPixel);
}

#endif

} // namespace kestrine::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kestrine::kernels {

HWY_EXPORT(undoPixelDifferences);

void undoPixelDifferences(std::uint8_t* row, std::size_t count, std::size_t bytesPerSample,
                          std::size_t samplesPerPixel) {
    HWY_DYNAMIC_DISPATCH(undoPixelDifferences)(row, count, bytesPerSample, samplesPerPixel);
}

} // namespace kestrine::kernels
#endif
