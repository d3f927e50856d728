// Sums of products of 16-bit integers in 32 bits, for kernels with integer arithmetic. Included once per
// vector target.

#if defined(KESTRINE_WEIGHTED_SUMS) == defined(HWY_TARGET_TOGGLE)
#ifdef KESTRINE_WEIGHTED_SUMS
#undef KESTRINE_WEIGHTED_SUMS
#else
#define KESTRINE_WEIGHTED_SUMS
#endif

#include <cstdint>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kestrine::kernels::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using Tag16 = hn::CappedTag<std::int16_t, 32>;
using Tag32 = hn::RepartitionToWide<Tag16>;
using Int16 = hn::Vec<Tag16>;
using Int32 = hn::Vec<Tag32>;
constexpr Tag16 d16;
constexpr Tag32 d32;

/// 16-bit values per vector.
constexpr int vectorWidth = static_cast<int>(hn::MaxLanes(Tag16()));

/// Sums of products. Their order is internal; narrowed() restores the original one.
struct Sums {
    Int32 low, high;

    /// Not initialised. GCC would compile an implicit constructor without the instructions of the vector
    /// target.
    HWY_INLINE Sums() {}
    HWY_INLINE Sums(Int32 lowLanes, Int32 highLanes) : low(lowLanes), high(highLanes) {}
};

HWY_INLINE Sums operator+(const Sums& a, const Sums& b) {
    return {hn::Add(a.low, b.low), hn::Add(a.high, b.high)};
}
HWY_INLINE Sums operator-(const Sums& a, const Sums& b) {
    return {hn::Sub(a.low, b.low), hn::Sub(a.high, b.high)};
}

/// The same number in every lane.
HWY_INLINE Sums sumsOf(std::int32_t value) { return {hn::Set(d32, value), hn::Set(d32, value)}; }

template <int shift>
HWY_INLINE Sums shiftedRight(const Sums& sums) {
    return {hn::ShiftRight<shift>(sums.low), hn::ShiftRight<shift>(sums.high)};
}

/// Saturates to 16 bits.
HWY_INLINE Int16 narrowed(const Sums& sums) { return hn::ReorderDemote2To(d16, sums.low, sums.high); }

/// Two vectors for weighted sums: weighed<a, b>() is a * first + b * second. x86 adds the products of
/// neighbouring values, so the two vectors are interleaved there.
struct Pairs {
    Int16 first, second;

#if HWY_ARCH_X86
    HWY_INLINE Pairs(Int16 a, Int16 b)
        : first(hn::InterleaveLower(d16, a, b)), second(hn::InterleaveUpper(d16, a, b)) {}

    template <int a, int b>
    HWY_INLINE Sums weighed() const {
        constexpr std::uint32_t both = static_cast<std::uint32_t>(b) << 16 | static_cast<std::uint16_t>(a);
        const Int16 weights = hn::BitCast(d16, hn::Set(d32, static_cast<std::int32_t>(both)));
        Int32 unused = hn::Zero(d32);
        return {hn::ReorderWidenMulAccumulate(d32, first, weights, hn::Zero(d32), unused),
                hn::ReorderWidenMulAccumulate(d32, second, weights, hn::Zero(d32), unused)};
    }
#else
    HWY_INLINE Pairs(Int16 a, Int16 b) : first(a), second(b) {}

    template <int a, int b>
    HWY_INLINE Sums weighed() const {
        Sums sums = {hn::Zero(d32), hn::Zero(d32)};
        sums.low = hn::ReorderWidenMulAccumulate(d32, first, hn::Set(d16, a), sums.low, sums.high);
        sums.low = hn::ReorderWidenMulAccumulate(d32, second, hn::Set(d16, b), sums.low, sums.high);
        return sums;
    }
#endif
};

} // namespace kestrine::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
