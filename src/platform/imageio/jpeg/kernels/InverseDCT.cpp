// The two passes of the inverse transform, for every size of the result. Operations have the order of the
// reference, so that sums wrap and saturate in the same places. The reference itself transforms blocks whose
// first row has values so large that its shortcut for flat columns gives a different result.

#include "platform/imageio/jpeg/kernels/InverseDCT.h"

#include "platform/imageio/jpeg/kernels/InverseDCT_reference.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/imageio/jpeg/kernels/InverseDCT.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#undef KESTRINE_PLAIN_LOOPS
#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128 || HWY_HAVE_SCALABLE
#define KESTRINE_PLAIN_LOOPS 1
#else
#define KESTRINE_PLAIN_LOOPS 0
// Included once for each target.
#include "platform/imageio/jpeg/kernels/InverseDCTVectors-inl.h"
#endif

HWY_BEFORE_NAMESPACE();
namespace kestrine::kernels::HWY_NAMESPACE {

#if KESTRINE_PLAIN_LOOPS // without vectors, or with vectors whose width is unknown at compile time

using reference::inverseDCT;

#else

constexpr int constantBits = 13;
constexpr int passBits = 2;

consteval int fixed(double value) { return static_cast<int>(value * (1 << constantBits) + 0.5); }

constexpr int f0298 = fixed(0.298631336), f0390 = fixed(0.390180644), f0541 = fixed(0.541196100),
              f0765 = fixed(0.765366865), f0899 = fixed(0.899976223), f1175 = fixed(1.175875602),
              f1501 = fixed(1.501321110), f1847 = fixed(1.847759065), f1961 = fixed(1.961570560),
              f2053 = fixed(2.053119869), f2562 = fixed(2.562915447), f3072 = fixed(3.072711026);

/// Rounding before a shift adds half of the dropped unit: roundingUnit times this weight.
constexpr int roundingUnit = 16;
template <int shift>
constexpr int roundingWeight = (1 << (shift - 1)) / roundingUnit;

HWY_INLINE Int16 unit() { return hn::Set(d16, roundingUnit); }

/// The contribution of the even-numbered vectors to the first four results. Only the first `inputs` of the
/// eight vectors are not zero.
template <int inputs, int shift>
HWY_INLINE void evenOfEight(const Int16* in, Sums* even) {
    constexpr int one = 1 << constantBits;
    Sums low, high, bend3, bend2;
    if constexpr (inputs == 8) {
        const Pairs bends(in[2], in[6]);
        bend3 = bends.weighed<f0541 + f0765, f0541>();
        bend2 = bends.weighed<f0541, f0541 - f1847>();
        low = Pairs(hn::Add(in[0], in[4]), unit()).weighed<one, roundingWeight<shift>>();
        high = Pairs(hn::Sub(in[0], in[4]), unit()).weighed<one, roundingWeight<shift>>();
    } else {
        const Pairs bends(in[2], in[2]);
        bend3 = bends.weighed<f0541 + f0765, 0>();
        bend2 = bends.weighed<f0541, 0>();
        low = high = Pairs(in[0], unit()).weighed<one, roundingWeight<shift>>();
    }
    even[0] = low + bend3;
    even[1] = high + bend2;
    even[2] = high - bend2;
    even[3] = low - bend3;
}

/// The contribution of the odd-numbered vectors, which the last four results have with the opposite sign.
template <int inputs>
HWY_INLINE void oddOfEight(const Int16* in, Sums* odd) {
    if constexpr (inputs == 8) {
        const Pairs sums(hn::Add(in[7], in[3]), hn::Add(in[5], in[1]));
        const Sums sum3 = sums.weighed<f1175 - f1961, f1175>(), sum4 = sums.weighed<f1175, f1175 - f0390>();
        const Pairs outer(in[7], in[1]), inner(in[5], in[3]);
        odd[0] = sum4 + outer.weighed<-f0899, f1501 - f0899>();
        odd[1] = sum3 + inner.weighed<-f2562, f3072 - f2562>();
        odd[2] = sum4 + inner.weighed<f2053 - f2562, -f2562>();
        odd[3] = sum3 + outer.weighed<f0298 - f0899, -f0899>();
    } else {
        const Pairs sides(in[1], in[3]);
        odd[0] = sides.weighed<f1175 - f0390 + f1501 - f0899, f1175>();
        odd[1] = sides.weighed<f1175, f1175 - f1961 + f3072 - f2562>();
        odd[2] = sides.weighed<f1175 - f0390, f1175 - f2562>();
        odd[3] = sides.weighed<f1175 - f0899, f1175 - f1961>();
    }
}

template <int inputs, int shift>
HWY_INLINE void passOfEight(const Int16* in, Int16* out) {
    Sums even[4], odd[4];
    evenOfEight<inputs, shift>(in, even);
    oddOfEight<inputs>(in, odd);
#pragma GCC unroll 4
    for (int i = 0; i < 4; ++i) {
        out[i] = narrowed(shiftedRight<shift>(even[i] + odd[i]));
        out[7 - i] = narrowed(shiftedRight<shift>(even[i] - odd[i]));
    }
}

/// The means of neighbouring pairs of the eight results; they do not depend on in[4].
template <int inputs, int shift>
HWY_INLINE void passOfFour(const Int16* in, Int16* out) {
    const Pairs sides(in[1], in[3]);
    Sums outer = sides.weighed<f2562, f0899>();
    Sums inner = sides.weighed<fixed(1.061594337), -fixed(2.172734803)>();
    Sums bend;
    if constexpr (inputs == 8) {
        const Pairs farSides(in[5], in[7]);
        outer = outer + farSides.weighed<-fixed(0.601344887), -fixed(0.509795579)>();
        inner = inner + farSides.weighed<fixed(1.451774981), -fixed(0.211164243)>();
        bend = Pairs(in[2], in[6]).weighed<f1847, -f0765>();
    } else {
        bend = Pairs(in[2], in[2]).weighed<f1847, 0>();
    }
    const Sums mean = Pairs(in[0], unit()).weighed<2 << constantBits, roundingWeight<shift>>();
    const Sums upper = mean + bend, lower = mean - bend;
    out[0] = narrowed(shiftedRight<shift>(upper + outer));
    out[1] = narrowed(shiftedRight<shift>(lower + inner));
    out[2] = narrowed(shiftedRight<shift>(lower - inner));
    out[3] = narrowed(shiftedRight<shift>(upper - outer));
}

template <int size, int inputs, int extraBits>
HWY_INLINE void pass(const Int16* in, Int16* out) {
    if constexpr (size == 8)
        passOfEight<inputs, constantBits + extraBits>(in, out);
    else
        passOfFour<inputs, constantBits + extraBits + 1>(in, out);
}

/// Checks that every value of the first row is from -8192 to 8191. Outside this range, scaling a column whose
/// other rows are 0 (which wraps) and transforming it (which saturates) give different values.
class RangeCheck {
public:
    HWY_INLINE RangeCheck() : bits_(hn::Zero(d16)) {}
    HWY_INLINE void note(Int16 value) { bits_ = hn::Or(bits_, hn::Xor(value, hn::ShiftRight<15>(value))); }
    HWY_INLINE bool isPassed() const {
        return hn::AllTrue(d16, hn::Lt(bits_, hn::Set(d16, 1 << (15 - passBits))));
    }

private:
    Int16 bits_;
};

/// Returns false when the values of the first row are too large, see RangeCheck.
template <int size, int inputs>
HWY_INLINE bool transformColumns(const std::int16_t* group, const std::uint16_t* quantisation,
                                 Columns<size>& columns) {
    RangeCheck range;
    for (int x = 0; x < inputs; x += positionsAtOnce) {
        if (size == 4 && positionsAtOnce == 1 && x == 4)
            continue;
        for (int lane = 0; lane < dctLanes; lane += lanesAtOnce) {
            const DequantisedColumn column(group, quantisation, x, lane);
            Int16 in[8], out[size];
#pragma GCC unroll 8
            for (int y = 0; y < inputs; ++y)
                in[y] = column[y];
            range.note(in[0]);
            pass<size, inputs, -passBits>(in, out);
            columns.store(x, lane, out);
        }
    }
    return range.isPassed();
}

template <int size, int inputs, bool touching>
HWY_INLINE void transformRows(const Columns<size>& columns, const Squares& squares) {
    for (int y = 0; y < size; y += positionsAtOnce)
        for (int lane = 0; lane < dctLanes; lane += lanesAtOnce) {
            Int16 in[8], out[size];
#pragma GCC unroll 8
            for (int x = 0; x < inputs; ++x)
                in[x] = hn::LoadU(d16, columns.at(x, y) + lane);
            pass<size, inputs, passBits + 3>(in, out);
            storeRow<size, touching>(out, squares, lane, y);
        }
}

template <int size, int inputs>
bool transform(const std::int16_t* group, const std::uint16_t* quantisation, const Squares& squares) {
    Columns<size> columns;
    if (!transformColumns<size, inputs>(group, quantisation, columns))
        return false;
    if (squares.laneStride == size)
        transformRows<size, inputs, true>(columns, squares);
    else
        transformRows<size, inputs, false>(columns, squares);
    return true;
}

/// Half the difference between the means of the first four and the last four of eight results.
HWY_INLINE Sums slope(const Int16* in) {
    return Pairs(in[1], in[3]).weighed<fixed(3.624509785), -fixed(1.272758580)>()
           + Pairs(in[5], in[7]).weighed<fixed(0.850430095), -fixed(0.720959822)>();
}

/// Two samples per side: the means (column 0) keep 32 bits between the passes.
class TransformToTwo {
public:
    HWY_INLINE TransformToTwo() {} // not initialised, like Sums

    void run(const std::int16_t* group, const std::uint16_t* quantisation, const Squares& squares) {
        for (int lane = 0; lane < dctLanes; lane += lanesAtOnce) {
            for (int x = 0; x < 8; x += positionsAtOnce)
                if (positionsAtOnce == 2 || x == 0 || x % 2 == 1)
                    transformColumn(DequantisedColumn(group, quantisation, x, lane), x, lane);
            for (int y = 0; y < 2; y += positionsAtOnce)
                transformRow(y, lane, squares);
        }
    }

private:
    static constexpr int meanBits = constantBits + 2;

    HWY_INLINE void transformColumn(const DequantisedColumn& column, int x, int lane) {
        constexpr int shift = meanBits - passBits;
        const Int16 in[8] = {column[0], column[1], column[0], column[3],
                             column[0], column[5], column[0], column[7]};
        // The weight of the mean does not fit 16 bits, so it is added in two halves.
        const Sums mean = Pairs(in[0], in[0]).weighed<1 << (meanBits - 1), 1 << (meanBits - 1)>()
                          + sumsOf(1 << (shift - 1));
        const Sums side = slope(in), upper = shiftedRight<shift>(mean + side),
                   lower = shiftedRight<shift>(mean - side);
        const Int16 out[2] = {narrowed(upper), narrowed(lower)};
        columns_.store(x, lane, out);
        if (x != 0)
            return;
        if constexpr (positionsAtOnce == 1) {
            means_[0] = upper;
            means_[1] = lower;
        } else {
            means_[0] = {hn::ConcatLowerLower(d32, lower.low, upper.low),
                         hn::ConcatLowerLower(d32, lower.high, upper.high)};
        }
    }

    HWY_INLINE void transformRow(int y, int lane, const Squares& squares) const {
        constexpr int shift = meanBits + passBits + 3;
        Int16 in[8];
#pragma GCC unroll 4
        for (int x = 1; x < 8; x += 2)
            in[x] = hn::LoadU(d16, columns_.at(x, y) + lane);
        const Sums mean =
            Sums{hn::ShiftLeft<meanBits>(means_[y].low), hn::ShiftLeft<meanBits>(means_[y].high)}
            + sumsOf(1 << (shift - 1));
        const Sums side = slope(in);
        const Int16 out[2] = {narrowed(shiftedRight<shift>(mean + side)),
                              narrowed(shiftedRight<shift>(mean - side))};
        storeRow<2, false>(out, squares, lane, y);
    }

    Columns<2> columns_;
    Sums means_[2];
};

/// The sample, minus 128, of a block that has only its DC coefficient; `product` is that coefficient times
/// its quantiser. Each size drops different bits of large products.
template <int size>
HWY_INLINE Int16 sampleOfMean(Int16 product) {
    const Int16 rounded = hn::Add(product, hn::Set(d16, 4));
    if constexpr (size == 1)
        return hn::ShiftRight<6>(hn::ShiftLeft<3>(rounded));
    if constexpr (size == 2)
        return hn::ShiftRight<4>(hn::ShiftLeft<1>(rounded));
    const Int16 sixteenth = hn::ShiftRight<4>(hn::ShiftLeft<passBits>(product));
    return hn::ShiftRight<1>(hn::Add(sixteenth, hn::Set(d16, 1)));
}

template <int size>
void fillWithMeans(const std::int16_t* group, std::uint16_t quantiser, const Squares& squares) {
    for (int lane = 0; lane < dctLanes; lane += lanesAtOnce) {
        Int16 product =
            hn::Mul(hn::LoadU(d16, group + lane), hn::Set(d16, static_cast<std::int16_t>(quantiser)));
        if constexpr (positionsAtOnce == 2)
            product = hn::ConcatLowerLower(d16, product, product);
        Int16 row[size];
        std::fill(row, row + size, sampleOfMean<size>(product));
        for (int y = 0; y < size; y += positionsAtOnce)
            storeRow<size, false>(row, squares, lane, y);
    }
}

/// The coefficients up to this zigzag index lie in the first four columns and rows.
constexpr int lastOfFourByFour = 9;

template <int size>
bool transformGroup(const std::int16_t* group, const std::uint16_t* quantisation, int lastNonZero,
                    const Squares& squares) {
    if (size == 1 || lastNonZero == 0)
        fillWithMeans<size>(group, quantisation[0], squares);
    else if constexpr (size == 2)
        TransformToTwo().run(group, quantisation, squares);
    else if (lastNonZero <= lastOfFourByFour)
        return transform<size, 4>(group, quantisation, squares);
    else
        return transform<size, 8>(group, quantisation, squares);
    return true;
}

/// Returns false when the reference must transform the group, see RangeCheck.
bool transformGroup(int size, const std::int16_t* group, const std::uint16_t* quantisation, int lastNonZero,
                    const Squares& squares) {
    switch (size) {
    case 8:
        return transformGroup<8>(group, quantisation, lastNonZero, squares);
    case 4:
        return transformGroup<4>(group, quantisation, lastNonZero, squares);
    case 2:
        return transformGroup<2>(group, quantisation, lastNonZero, squares);
    default:
        return transformGroup<1>(group, quantisation, lastNonZero, squares);
    }
}

void inverseDCT(int size, const std::int16_t* group, const std::uint16_t* quantisation, int lastNonZero,
                std::uint8_t* output, std::ptrdiff_t laneStride, std::ptrdiff_t rowStride) {
    if (!transformGroup(size, group, quantisation, lastNonZero, {output, laneStride, rowStride}))
        reference::inverseDCT(size, group, quantisation, lastNonZero, output, laneStride, rowStride);
}

#endif

} // namespace kestrine::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kestrine::kernels {

HWY_EXPORT(inverseDCT);

void inverseDCT(int size, const std::int16_t* group, const std::uint16_t* quantisation, int lastNonZero,
                std::uint8_t* output, std::ptrdiff_t laneStride, std::ptrdiff_t rowStride) {
    HWY_DYNAMIC_DISPATCH(inverseDCT)
    (size, group, quantisation, lastNonZero, output, laneStride, rowStride);
}

} // namespace kestrine::kernels
#endif
