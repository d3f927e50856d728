// The transform of Loeffler, Ligtenberg and Moschytz with 13 fraction bits: first the columns, then the rows.
// For smaller squares it is simplified to the means of neighbouring samples.

#include "platform/imageio/jpeg/kernels/InverseDCT_reference.h"

#include <algorithm>

namespace kestrine::kernels::reference {

namespace {

/// Fraction bits of the constants, and of the values between the passes.
constexpr int constantBits = 13;
constexpr int passBits = 2;

consteval std::int32_t fixed(double value) {
    return static_cast<std::int32_t>(value * (1 << constantBits) + (value < 0 ? -0.5 : 0.5));
}

std::int16_t wrapped(std::int32_t value) { return static_cast<std::int16_t>(value); }

std::int16_t saturated(std::int32_t value) {
    return static_cast<std::int16_t>(std::clamp<std::int32_t>(value, INT16_MIN, INT16_MAX));
}

/// Sums of products that do not fit 32 bits wrap.
std::int32_t rounded(std::int64_t sum, int shift) {
    return static_cast<std::int32_t>(sum + (std::int64_t{1} << (shift - 1))) >> shift;
}

std::int16_t narrowed(std::int64_t sum, int shift) { return saturated(rounded(sum, shift)); }

std::uint8_t sample(std::int16_t value) {
    return static_cast<std::uint8_t>(std::clamp<int>(value, -128, 127) + 128);
}

/// One pass over eight values, which gives 8 or 4 results.
using Pass = void (*)(const std::int16_t* in, std::int16_t* out, int extraBits);

void eight(const std::int16_t* in, std::int16_t* out, int extraBits) {
    const std::int64_t low = std::int64_t{wrapped(in[0] + in[4])} << constantBits;
    const std::int64_t high = std::int64_t{wrapped(in[0] - in[4])} << constantBits;
    const std::int64_t even3 = in[2] * (fixed(0.541196100) + fixed(0.765366865)) + in[6] * fixed(0.541196100);
    const std::int64_t even2 = in[2] * fixed(0.541196100) + in[6] * (fixed(0.541196100) - fixed(1.847759065));
    const std::int64_t even[4] = {low + even3, high + even2, high - even2, low - even3};

    const std::int64_t z3 = wrapped(in[7] + in[3]), z4 = wrapped(in[5] + in[1]);
    const std::int64_t sum3 = z3 * (fixed(1.175875602) - fixed(1.961570560)) + z4 * fixed(1.175875602);
    const std::int64_t sum4 = z3 * fixed(1.175875602) + z4 * (fixed(1.175875602) - fixed(0.390180644));
    const std::int64_t odd[4] = {
        in[1] * (fixed(1.501321110) - fixed(0.899976223)) - in[7] * fixed(0.899976223) + sum4,
        in[3] * (fixed(3.072711026) - fixed(2.562915447)) - in[5] * fixed(2.562915447) + sum3,
        in[5] * (fixed(2.053119869) - fixed(2.562915447)) - in[3] * fixed(2.562915447) + sum4,
        in[7] * (fixed(0.298631336) - fixed(0.899976223)) - in[1] * fixed(0.899976223) + sum3};
    const int shift = constantBits + extraBits;
    for (int i = 0; i < 4; ++i) {
        out[i] = narrowed(even[i] + odd[i], shift);
        out[7 - i] = narrowed(even[i] - odd[i], shift);
    }
}

void four(const std::int16_t* in, std::int16_t* out, int extraBits) {
    const std::int64_t mean = std::int64_t{in[0]} << (constantBits + 1);
    const std::int64_t bend = in[2] * fixed(1.847759065) - in[6] * fixed(0.765366865);
    const std::int64_t inner = in[7] * -fixed(0.211164243) + in[5] * fixed(1.451774981)
                               + in[3] * -fixed(2.172734803) + in[1] * fixed(1.061594337);
    const std::int64_t outer = in[7] * -fixed(0.509795579) + in[5] * -fixed(0.601344887)
                               + in[3] * fixed(0.899976223) + in[1] * fixed(2.562915447);
    const int shift = constantBits + extraBits + 1;
    out[0] = narrowed(mean + bend + outer, shift);
    out[1] = narrowed(mean - bend + inner, shift);
    out[2] = narrowed(mean - bend - inner, shift);
    out[3] = narrowed(mean + bend - outer, shift);
}

/// Half the difference between the means of the first four and the last four samples.
std::int64_t slope(const std::int16_t* in) {
    return in[7] * -fixed(0.720959822) + in[5] * fixed(0.850430095) + in[3] * -fixed(1.272758580)
           + in[1] * fixed(3.624509785);
}

struct Block {
    std::int16_t values[dctCoefficients];
};

std::int16_t product(const Block& coefficients, const std::uint16_t* quantisation, int position) {
    return wrapped(coefficients.values[position] * quantisation[position]);
}

/// Whether all coefficients below the first row are 0, except those that `size` does not use (row 4 for four
/// samples). The columns of such a block are only scaled, which wraps where the transform would saturate.
bool isFlatInColumns(const Block& coefficients, int size) {
    for (int z = 8; z < dctCoefficients; ++z)
        if (coefficients.values[z] != 0 && !(size == 4 && z / 8 == 4))
            return false;
    return true;
}

/// Applies `pass`, which makes `size` values of eight, to all columns and then to all rows.
void transform(Pass pass, int size, const Block& coefficients, const std::uint16_t* quantisation,
               Block& samples) {
    const bool isFlat = isFlatInColumns(coefficients, size);
    Block columns{};
    for (int x = 0; x < 8; ++x) {
        std::int16_t in[8], out[8];
        for (int y = 0; y < 8; ++y)
            in[y] = product(coefficients, quantisation, y * 8 + x);
        pass(in, out, -passBits);
        for (int y = 0; y < size; ++y)
            columns.values[y * 8 + x] = isFlat ? wrapped(in[0] << passBits) : out[y];
    }
    for (int y = 0; y < size; ++y)
        pass(columns.values + y * 8, samples.values + y * 8, passBits + 3);
}

/// Two samples per side: means and slopes only. The means keep all their bits between the passes.
void transformToTwo(const Block& coefficients, const std::uint16_t* quantisation, Block& samples) {
    constexpr int meanBits = constantBits + 2;
    std::int32_t means[2];
    std::int16_t rows[2][8];
    for (int x = 0; x < 8; ++x) {
        std::int16_t in[8];
        for (int y = 0; y < 8; ++y)
            in[y] = product(coefficients, quantisation, y * 8 + x);
        for (int y = 0; y < 2; ++y) {
            const std::int64_t sum = (std::int64_t{in[0]} << meanBits) + (y == 0 ? slope(in) : -slope(in));
            const std::int32_t value = rounded(sum, meanBits - passBits);
            rows[y][x] = saturated(value);
            if (x == 0)
                means[y] = value;
        }
    }
    for (int y = 0; y < 2; ++y) {
        const std::int64_t sum = std::int64_t{means[y]} << meanBits;
        samples.values[y * 8] = narrowed(sum + slope(rows[y]), meanBits + passBits + 3);
        samples.values[y * 8 + 1] = narrowed(sum - slope(rows[y]), meanBits + passBits + 3);
    }
}

/// A single sample is the mean, wrapped to 10 bits.
void mean(const Block& coefficients, const std::uint16_t* quantisation, Block& samples) {
    const std::int32_t sum = coefficients.values[0] * static_cast<std::int16_t>(quantisation[0]);
    const int eighth = (sum + 4) >> 3;
    samples.values[0] = static_cast<std::int16_t>(((eighth + 512) & 1023) - 512);
}

void transformBlock(int size, const Block& coefficients, const std::uint16_t* quantisation, Block& samples) {
    switch (size) {
    case 8:
        return transform(eight, size, coefficients, quantisation, samples);
    case 4:
        return transform(four, size, coefficients, quantisation, samples);
    case 2:
        return transformToTwo(coefficients, quantisation, samples);
    default:
        return mean(coefficients, quantisation, samples);
    }
}

} // namespace

void inverseDCT(int size, const std::int16_t* group, const std::uint16_t* quantisation, int,
                std::uint8_t* output, std::ptrdiff_t laneStride, std::ptrdiff_t rowStride) {
    for (int lane = 0; lane < dctLanes; ++lane) {
        Block coefficients, samples;
        for (int z = 0; z < dctCoefficients; ++z)
            coefficients.values[z] = group[z * dctLanes + lane];
        transformBlock(size, coefficients, quantisation, samples);
        for (int y = 0; y < size; ++y)
            for (int x = 0; x < size; ++x)
                output[lane * laneStride + y * rowStride + x] = sample(samples.values[y * 8 + x]);
    }
}

} // namespace kestrine::kernels::reference
