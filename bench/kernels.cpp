// Measures the inner loops for a JPEG of 24 megapixels, decoded at half size (3000 pixels wide) and scaled to
// 1200.

#include "platform/coregraphics/ColumnFilter.h"
#include "platform/coregraphics/Resampler.h"
#include "platform/coregraphics/SampleConversion.h"
#include "platform/coregraphics/kernels/ResampleRows.h"
#include "platform/coregraphics/kernels/ResampleRows_reference.h"
#include "platform/imageio/jpeg/kernels/ChromaUpsampling.h"
#include "platform/imageio/jpeg/kernels/ChromaUpsampling_reference.h"
#include "platform/imageio/jpeg/kernels/InverseDCT.h"
#include "platform/imageio/jpeg/kernels/InverseDCT_reference.h"
#include "platform/imageio/jpeg/kernels/YCbCrToRGB.h"
#include "platform/imageio/jpeg/kernels/YCbCrToRGB_reference.h"

#include <benchmark/benchmark.h>

#include <algorithm>

namespace kestrine {

namespace {

constexpr std::uint32_t sourceWidth = 3000, resultWidth = 1200;
constexpr std::size_t channels = 3;
const AxisMap halfTo1200 = {1200.0 / 3000, 0, resultWidth};

/// Adds four rows to six sums.
template <auto add>
void addWeightedRows(benchmark::State& state) {
    std::vector<std::vector<float>> sums(6, std::vector<float>(sourceWidth * channels));
    std::vector<float*> targets;
    targets.reserve(sums.size());
    for (auto& sum : sums)
        targets.push_back(sum.data());
    const std::vector<std::vector<float>> rows(4, std::vector<float>(sourceWidth * channels, 0.5F));
    std::vector<const float*> sources;
    sources.reserve(rows.size());
    for (const auto& row : rows)
        sources.push_back(row.data());
    const std::vector<float> weights(24, 0.1F);
    for (auto _ : state)
        add(targets, weights.data(), sources, rows[0].size());
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(sourceWidth * rows.size()));
}
BENCHMARK(addWeightedRows<kernels::addWeightedRows>)->Name("addWeightedRows/vector");
BENCHMARK(addWeightedRows<kernels::reference::addWeightedRows>)->Name("addWeightedRows/plain");

/// Weighs eight rows at once.
template <auto weigh>
void weighRows(benchmark::State& state) {
    const FilterWeights weights(ResampleFilter::lanczos, halfTo1200, sourceWidth);
    const std::vector<std::vector<float>> rows(
        8, std::vector<float>(sourceWidth * channels + kernels::rowPadding, 0.5F));
    std::vector<std::vector<float>> results(8,
                                            std::vector<float>(resultWidth * channels + kernels::rowPadding));
    std::vector<const float*> from;
    std::vector<float*> to;
    for (std::size_t r = 0; r < rows.size(); ++r) {
        from.push_back(rows[r].data());
        to.push_back(results[r].data());
    }
    for (auto _ : state)
        weigh(from, channels, weights.kernelWeights(), to);
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(resultWidth * rows.size()));
}
BENCHMARK(weighRows<kernels::weighRows>)->Name("weighRows/vector");
BENCHMARK(weighRows<kernels::reference::weighRows>)->Name("weighRows/plain");

const RowFormat sourceFormat = {sourceWidth, 2000, ColorModel::rgb, false, SampleDepth::bits8};

void toLight(benchmark::State& state) {
    const SampleConversion conversion(sourceFormat, resultWidth, SampleDepth::bits8, Light::linear, nullptr);
    const Bytes samples(sourceWidth * channels, 100);
    std::vector<float> floats(sourceWidth * channels);
    for (auto _ : state)
        conversion.toFloats(samples.data(), floats.data());
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(sourceWidth));
}
BENCHMARK(toLight);

void fromLight(benchmark::State& state) {
    SampleConversion conversion(sourceFormat, resultWidth, SampleDepth::bits8, Light::linear, nullptr);
    std::vector<float> floats(resultWidth * channels, 0.3F);
    Bytes samples(resultWidth * channels);
    for (auto _ : state)
        conversion.toSamples(floats.data(), resultWidth, samples.data());
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(resultWidth));
}
BENCHMARK(fromLight);

/// Arguments: size of a square, last zigzag index, distance between neighbouring squares in squares. An item
/// is a pixel of the whole picture, 64 for each of 16 blocks.
template <auto transform>
void inverseDCT(benchmark::State& state) {
    const auto size = static_cast<int>(state.range(0)), lastNonZero = static_cast<int>(state.range(1));
    const auto laneStride = size * static_cast<int>(state.range(2));
    alignas(64) std::int16_t group[kernels::dctCoefficients * kernels::dctLanes] = {};
    std::fill_n(group, kernels::dctLanes, std::int16_t{17});
    const std::vector<std::uint16_t> quantisation(kernels::dctCoefficients, 5);
    Bytes samples(static_cast<std::size_t>(laneStride * kernels::dctLanes * size));
    for (auto _ : state) {
        transform(size, group, quantisation.data(), lastNonZero, samples.data(), laneStride,
                  laneStride * kernels::dctLanes);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kernels::dctCoefficients * kernels::dctLanes);
}
constexpr int everything = 63, fourByFour = 9, meanAlone = 0;
BENCHMARK(inverseDCT<kernels::inverseDCT>)
    ->Name("inverseDCT/vector")
    ->ArgsProduct({{8, 4, 2, 1}, {everything, fourByFour, meanAlone}, {1, 2}});
BENCHMARK(inverseDCT<kernels::reference::inverseDCT>)
    ->Name("inverseDCT/plain")
    ->ArgsProduct({{8, 4, 2, 1}, {everything}, {1}});

/// Here and below an item is a pixel of the result.
template <auto upsample>
void upsampleRow(benchmark::State& state) {
    const Bytes row(sourceWidth, 100);
    Bytes result(2 * sourceWidth);
    for (auto _ : state)
        upsample(row.data(), sourceWidth, result.data());
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(result.size()));
}
BENCHMARK(upsampleRow<kernels::upsampleH2V1Fancy>)->Name("upsampleH2V1Fancy/vector");
BENCHMARK(upsampleRow<kernels::reference::upsampleH2V1Fancy>)->Name("upsampleH2V1Fancy/plain");

template <auto upsample>
void upsampleTwoRows(benchmark::State& state) {
    const Bytes nearRow(sourceWidth, 100), farRow(sourceWidth, 50);
    Bytes result(2 * sourceWidth);
    for (auto _ : state)
        upsample(nearRow.data(), farRow.data(), sourceWidth, result.data());
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(result.size()));
}
BENCHMARK(upsampleTwoRows<kernels::upsampleH2V2Fancy>)->Name("upsampleH2V2Fancy/vector");
BENCHMARK(upsampleTwoRows<kernels::reference::upsampleH2V2Fancy>)->Name("upsampleH2V2Fancy/plain");

template <auto upsample>
void upsampleDown(benchmark::State& state) {
    const Bytes nearRow(sourceWidth, 100), farRow(sourceWidth, 50);
    Bytes result(sourceWidth);
    for (auto _ : state)
        upsample(nearRow.data(), farRow.data(), true, sourceWidth, result.data());
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(result.size()));
}
BENCHMARK(upsampleDown<kernels::upsampleH1V2Fancy>)->Name("upsampleH1V2Fancy/vector");
BENCHMARK(upsampleDown<kernels::reference::upsampleH1V2Fancy>)->Name("upsampleH1V2Fancy/plain");

/// Argument: how often a sample is repeated.
void replicate(benchmark::State& state) {
    const auto times = static_cast<int>(state.range(0));
    const Bytes row(sourceWidth, 100);
    Bytes result(sourceWidth * static_cast<std::size_t>(times));
    for (auto _ : state)
        kernels::replicate(row.data(), sourceWidth, times, result.data());
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(result.size()));
}
BENCHMARK(replicate)->Arg(2)->Arg(4);

template <auto convert>
void convertYCbCrToRGB(benchmark::State& state) {
    const Bytes y(sourceWidth, 100), cb(sourceWidth, 90), cr(sourceWidth, 150);
    Bytes rgb(sourceWidth * channels);
    for (auto _ : state)
        convert(y.data(), cb.data(), cr.data(), sourceWidth, rgb.data());
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(sourceWidth));
}
BENCHMARK(convertYCbCrToRGB<kernels::convertYCbCrToRGB>)->Name("convertYCbCrToRGB/vector");
BENCHMARK(convertYCbCrToRGB<kernels::reference::convertYCbCrToRGB>)->Name("convertYCbCrToRGB/plain");

} // namespace

} // namespace kestrine
