// The inner loops of a 24 megapixel JPEG decoded at half size (3000 pixels wide) and scaled to 1200.

#include "platform/coregraphics/ColumnFilter.h"
#include "platform/coregraphics/Resampler.h"
#include "platform/coregraphics/SampleConversion.h"
#include "platform/coregraphics/kernels/ResampleRows.h"
#include "platform/coregraphics/kernels/ResampleRows_reference.h"

#include <benchmark/benchmark.h>

namespace kestrine {

namespace {

constexpr std::uint32_t sourceWidth = 3000, resultWidth = 1200;
constexpr std::size_t channels = 3;
const AxisMap halfTo1200 = {1200.0 / 3000, 0, resultWidth};

template <auto add>
void addWeightedRow(benchmark::State& state) {
    std::vector<std::vector<float>> sums(6, std::vector<float>(sourceWidth * channels));
    std::vector<float*> targets;
    for (auto& sum : sums)
        targets.push_back(sum.data());
    const std::vector<float> weights = {0.1F, 0.2F, 0.3F, 0.2F, 0.1F, -0.05F},
                             row(sourceWidth * channels, 0.5F);
    for (auto _ : state)
        add(targets, weights, row.data(), row.size());
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(sourceWidth));
}
BENCHMARK(addWeightedRow<kernels::addWeightedRow>)->Name("addWeightedRow/vector");
BENCHMARK(addWeightedRow<kernels::reference::addWeightedRow>)->Name("addWeightedRow/plain");

template <auto weigh>
void weighPixels(benchmark::State& state) {
    const FilterWeights weights(ResampleFilter::lanczos, halfTo1200, sourceWidth);
    const std::vector<float> row(sourceWidth * channels + kernels::rowPadding, 0.5F);
    std::vector<float> result(resultWidth * channels + kernels::rowPadding);
    for (auto _ : state)
        weigh(row.data(), channels, weights.kernelWeights(), result.data());
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(resultWidth));
}
BENCHMARK(weighPixels<kernels::weighPixels>)->Name("weighPixels/vector");
BENCHMARK(weighPixels<kernels::reference::weighPixels>)->Name("weighPixels/plain");

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

} // namespace

} // namespace kestrine
