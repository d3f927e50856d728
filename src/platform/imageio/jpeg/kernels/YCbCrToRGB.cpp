// Everything except the weighted sum for green is computed in 16 bits; the upper half of a product is
// sufficient for exact rounding.

#include "platform/imageio/jpeg/kernels/YCbCrToRGB.h"

#include "platform/imageio/jpeg/kernels/YCbCrToRGB_reference.h"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/imageio/jpeg/kernels/YCbCrToRGB.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#undef KESTRINE_PLAIN_LOOPS
#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128 || HWY_HAVE_SCALABLE
#define KESTRINE_PLAIN_LOOPS 1
#else
#define KESTRINE_PLAIN_LOOPS 0
#include "platform/coregraphics/kernels/WeightedSums-inl.h"
#endif

HWY_BEFORE_NAMESPACE();
namespace kestrine::kernels::HWY_NAMESPACE {

#if KESTRINE_PLAIN_LOOPS

using reference::convertYCbCrToRGB;

#else

using TagBytes = hn::Rebind<std::uint8_t, Tag16>;
constexpr TagBytes dBytes;

constexpr int fractionBits = 16;

consteval int fixed(double value) { return static_cast<int>(value * (1 << fractionBits) + 0.5); }

HWY_INLINE Int16 load(const std::uint8_t* samples) { return hn::PromoteTo(d16, hn::LoadU(dBytes, samples)); }

/// value * weight / 2^16, with halves rounded up.
template <int weight>
HWY_INLINE Int16 part(Int16 value) {
    const Int16 doubled = hn::MulHigh(hn::Add(value, value), hn::Set(d16, weight));
    return hn::ShiftRight<1>(hn::Add(doubled, hn::Set(d16, 1)));
}

/// The weights minus whole numbers, so that they fit 16 bits.
constexpr int redOfCr = fixed(1.40200) - fixed(1), greenOfCb = -fixed(0.34414),
              greenOfCr = fixed(1) - fixed(0.71414), blueOfCb = fixed(1.77200) - fixed(2);

struct Pixels {
    hn::Vec<TagBytes> red, green, blue;
};

HWY_INLINE Pixels pixelsOf(const std::uint8_t* y, const std::uint8_t* cb, const std::uint8_t* cr) {
    const Int16 luma = load(y);
    const Int16 u = hn::Sub(load(cb), hn::Set(d16, 128)), v = hn::Sub(load(cr), hn::Set(d16, 128));
    const Sums greenSums = Pairs(u, v).weighed<greenOfCb, greenOfCr>() + sumsOf(1 << (fractionBits - 1));
    const Int16 red = hn::Add(hn::Add(luma, v), part<redOfCr>(v));
    const Int16 green = hn::Add(hn::Sub(luma, v), narrowed(shiftedRight<fractionBits>(greenSums)));
    const Int16 blue = hn::Add(hn::Add(luma, hn::Add(u, u)), part<blueOfCb>(u));
    return {hn::DemoteTo(dBytes, red), hn::DemoteTo(dBytes, green), hn::DemoteTo(dBytes, blue)};
}

void convertYCbCrToRGB(const std::uint8_t* y, const std::uint8_t* cb, const std::uint8_t* cr,
                       std::size_t width, std::uint8_t* rgb) {
    constexpr std::size_t half = vectorWidth, step = 2 * half;
    if (width < step)
        return reference::convertYCbCrToRGB(y, cb, cr, width, rgb);
    const hn::Twice<TagBytes> whole;
    const std::size_t last = width - step; // the last vector may overlap the one before
    for (std::size_t i = 0;; i = std::min(i + step, last)) {
        const Pixels left = pixelsOf(y + i, cb + i, cr + i),
                     right = pixelsOf(y + i + half, cb + i + half, cr + i + half);
        hn::StoreInterleaved3(hn::Combine(whole, right.red, left.red),
                              hn::Combine(whole, right.green, left.green),
                              hn::Combine(whole, right.blue, left.blue), whole, rgb + 3 * i);
        if (i == last)
            return;
    }
}

#endif

} // namespace kestrine::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kestrine::kernels {

HWY_EXPORT(convertYCbCrToRGB);

void convertYCbCrToRGB(const std::uint8_t* y, const std::uint8_t* cb, const std::uint8_t* cr,
                       std::size_t width, std::uint8_t* rgb) {
    HWY_DYNAMIC_DISPATCH(convertYCbCrToRGB)(y, cb, cr, width, rgb);
}

} // namespace kestrine::kernels
#endif
