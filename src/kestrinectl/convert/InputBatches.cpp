#include "kestrinectl/convert/InputBatches.h"

#include "platform/host/process/StopSignals.h"

#include <algorithm>
#include <utility>

namespace kestrine {

namespace {

constexpr std::size_t batchSize = 1024;

} // namespace

void InputBatches::picture(ConvertInput input) {
    batch_.push_back({std::move(input), items_++, ++pictures_});
    if (batch_.size() == batchSize)
        end();
}

void InputBatches::end() {
    if (const std::vector<NumberedInput> batch = std::exchange(batch_, {});
        !batch.empty() && StopSignalsNoted::noted() == 0)
        work_.pictures(batch);
}

std::size_t countForNames(const ConvertSelection& selection, const ConversionRecipes& recipes) {
    if (!numbersNames(recipes))
        return 0;
    InputBatches counted(
        {.pictures = [](const auto&) {}, .finding = [](std::size_t, const ConvertResult&) {}});
    findInputs(selection.files, selection.search, counted);
    return counted.count();
}

} // namespace kestrine
