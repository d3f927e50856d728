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

/// Six sums, four rows at once.
template <auto add>
void addWeightedRows(benchmark::State& state) {
    std::vector<std::vector<float>> sums(6, std::vector<float>(sourceWidth * channels));
    std::vector<float*> targets;
    for (auto& sum : sums)
        targets.push_back(sum.data());
    const std::vector<std::vector<float>> rows(4, std::vector<float>(sourceWidth * channels, 0.5F));
    std::vector<const float*> sources;
    for (const auto& row : rows)
        sources.push_back(row.data());
    const std::vector<float> weights(24, 0.1F);
    for (auto _ : state)
        add(targets, weights.data(), sources, rows[0].size());
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(sourceWidth * rows.size()));
}
BENCHMARK(addWeightedRows<kernels::addWeightedRows>)->Name("addWeightedRows/vector");
BENCHMARK(addWeightedRows<kernels::reference::addWeightedRows>)->Name("addWeightedRows/plain");

/// Eight rows at once.
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

} // namespace

} // namespace kestrine
