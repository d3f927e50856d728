// InputBatches: what a search finds, in batches, for work that must be done in order.
#pragma once

#include "kestrinectl/convert/ConvertSelection.h"
#include "models/ConversionRecipe.h"

#include <functional>

namespace kestrine {

/// A picture, its place among all items (from 0), and its number among the pictures (from 1).
struct NumberedInput {
    ConvertInput input;
    std::size_t position, number;
};

/// What is done with batches and findings.
struct BatchWork {
    std::function<void(const std::vector<NumberedInput>&)> pictures;
    std::function<void(std::size_t position, ConvertResult)> finding;
};

class InputBatches final : public InputReceiver {
public:
    explicit InputBatches(BatchWork work) : work_(std::move(work)) {}

    void picture(ConvertInput input) override;
    void finding(ConvertResult finding) override { work_.finding(items_++, std::move(finding)); }
    void otherFile() override { ++otherFiles_; }

    /// After the search: hands over the last batch.
    void end();

    std::size_t count() const { return pictures_; }
    std::size_t otherFiles() const { return otherFiles_; }

private:
    BatchWork work_;
    std::vector<NumberedInput> batch_;
    std::size_t items_ = 0, pictures_ = 0, otherFiles_ = 0;
};

/// How many pictures a search finds; 0 without a search if no name of these recipes has their number.
std::size_t countForNames(const ConvertSelection& selection, const ConversionRecipes& recipes);

} // namespace kestrine
