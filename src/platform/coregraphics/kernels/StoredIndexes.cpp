#include "platform/coregraphics/kernels/StoredIndexes.h"

#include "platform/coregraphics/kernels/StoredIndexes_reference.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/coregraphics/kernels/StoredIndexes.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kestrine::kernels::HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR // without vectors

using reference::linearIndexes;
using reference::squareRootIndexes;

#else

namespace hn = hwy::HWY_NAMESPACE;

template <bool squareRoot>
void storeIndexes(const float* values, std::size_t count, float top, std::uint16_t* indexes) {
    const hn::ScalableTag<float> d;
    const hn::Rebind<std::int32_t, decltype(d)> integers;
    const hn::Rebind<std::uint16_t, decltype(d)> narrow;
    const std::size_t lanes = hn::Lanes(d);
    const auto zero = hn::Zero(d), one = hn::Set(d, 1.0F), half = hn::Set(d, 0.5F), scale = hn::Set(d, top);
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes) {
        auto value = hn::LoadU(d, values + i);
        value = hn::IfThenElseZero(hn::Gt(value, zero), hn::Min(value, one)); // NaN is not greater
        if constexpr (squareRoot)
            value = hn::Sqrt(value);
        const auto whole = hn::ConvertTo(integers, hn::Add(hn::Mul(value, scale), half));
        hn::StoreU(hn::DemoteTo(narrow, whole), narrow, indexes + i);
    }
    if constexpr (squareRoot)
        reference::squareRootIndexes(values + i, count - i, top, indexes + i);
    else
        reference::linearIndexes(values + i, count - i, top, indexes + i);
}

void squareRootIndexes(const float* light, std::size_t count, float top, std::uint16_t* indexes) {
    storeIndexes<true>(light, count, top, indexes);
}

void linearIndexes(const float* values, std::size_t count, float top, std::uint16_t* indexes) {
    storeIndexes<false>(values, count, top, indexes);
}

#endif

} // namespace kestrine::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kestrine::kernels {

HWY_EXPORT(squareRootIndexes);
HWY_EXPORT(linearIndexes);

void squareRootIndexes(const float* light, std::size_t count, float top, std::uint16_t* indexes) {
    HWY_DYNAMIC_DISPATCH(squareRootIndexes)(light, count, top, indexes);
}

void linearIndexes(const float* values, std::size_t count, float top, std::uint16_t* indexes) {
    HWY_DYNAMIC_DISPATCH(linearIndexes)(values, count, top, indexes);
}

} // namespace kestrine::kernels
#endif
