#include "kestrinectl/compare/Comparison.h"

#include "kestrinectl/compare/ResultLabels.h"
#include "kestrinectl/compare/StructuralSimilarity.h"
#include "kestrinectl/convert/ConvertKinds.h"
#include "kestrinectl/convert/ConvertOutcome.h"
#include "kestrinectl/text/ShownPath.h"
#include "models/ResizeJob.h"
#include "platform/imageio/PictureEngine.h"
#include "platform/imageio/exif/Orientation.h"

#include <algorithm>

namespace kestrine {

namespace {

/// The same result without any loss, as small as PNG gets it in normal time.
ConversionRecipe referenceOf(ConversionRecipe recipe) {
    recipe.format = {FormatRule::Choice::fixed, FileType::png};
    recipe.quality = 0;
    recipe.isLossless = false;
    recipe.isProgressive = false;
    recipe.effort = Effort::normal;
    recipe.maxBytes = 0;
    recipe.place.setName = std::nullopt;
    return recipe;
}

/// The pixels as a browser shows them on white, in sRGB.
Result<LumaPlane> lumaOfFile(const NSData& file) {
    const auto source = TRY(PictureEngine::current().open(readerOfBytes(file.bytes()), nullptr));
    return lumaOf(TRY(readPixels(Picture{source}.with(IntoSRGB{}).with(Flatten{white}))));
}

/// The comparison of one file.
class ComparisonRun {
public:
    explicit ComparisonRun(const ConvertInput& input) : input_(input) {
        comparison_.conversion.source = input.shown;
        openOriginal();
    }

    void add(const ConversionRecipe& recipe) {
        if (file_ == nullptr)
            return;
        const JobOutcome outcome = outcomeOf(recipe);
        addOutcome(comparison_.conversion, input_, recipe, outcome);
        if (outcome.data == nullptr || isRepeated(recipe, outcome))
            return;
        const Reference* reference = referenceFor(recipe);
        comparison_.images.push_back({.label = labelOf(recipe, *outcome.format),
                                      .format = outcome.format,
                                      .width = outcome.width,
                                      .height = outcome.height,
                                      .bytes = outcome.bytes,
                                      .file = outcome.data});
        if (reference != nullptr)
            measure(comparison_.images.back(), *reference);
    }

    Comparison comparison() && {
        addSizesToLabels(comparison_.images);
        return std::move(comparison_);
    }

private:
    struct Reference {
        ConversionRecipe recipe;
        std::optional<LumaPlane> luma;
    };

    void openOriginal() {
        auto file = readerOfPath(input_.path);
        auto source = file ? PictureEngine::current().open(*file, nullptr)
                           : Result<std::shared_ptr<Source>>(file.failure());
        if (!source) {
            complain(source.failure());
            return;
        }
        file_ = *file;
        const FrameDescription& picture = (*source)->frames().front();
        comparison_.format = (*source)->codec()->name;
        comparison_.width = picture.format.width;
        comparison_.height = picture.format.height;
        if (uprightTurnFor(picture.orientation).exchangesSides())
            std::swap(comparison_.width, comparison_.height);
        comparison_.bytes = file_->size();
    }

    void complain(const Failure& failure) {
        comparison_.conversion.complain(withoutPath(failure.text, input_.path), kindOf(failure.reason));
    }

    JobOutcome outcomeOf(const ConversionRecipe& recipe) const {
        const NSString path = NSString::fromUTF8(input_.path);
        return runJob({.path = path,
                       .saveFolderPath = path.deletingLastPathComponent(),
                       .recipes = {recipe},
                       .policy = {.onlyWithResult = true, .replacesOnlyPictures = true},
                       .content = file_})
            .front();
    }

    /// Whether another quality gave the same, because the format of the file has none.
    bool isRepeated(ConversionRecipe recipe, const JobOutcome& outcome) {
        if (outcome.format->hasQuality)
            return false;
        recipe.quality = 0;
        if (std::ranges::find(withoutQuality_, recipe) != withoutQuality_.end())
            return true;
        withoutQuality_.push_back(std::move(recipe));
        return false;
    }

    /// Null if it cannot be made.
    const Reference* referenceFor(const ConversionRecipe& recipe) {
        const ConversionRecipe lossless = referenceOf(recipe);
        const auto made = std::ranges::find(references_, lossless, &Reference::recipe);
        if (made != references_.end())
            return &*made;
        const JobOutcome outcome = outcomeOf(lossless);
        if (outcome.data == nullptr) {
            complain(*outcome.failure);
            return nullptr;
        }
        comparison_.images.push_back({.label = "Original",
                                      .format = outcome.format,
                                      .width = outcome.width,
                                      .height = outcome.height,
                                      .bytes = outcome.bytes,
                                      .file = outcome.data,
                                      .isReference = true});
        references_.push_back({lossless, lumaOrComplaint(*outcome.data)});
        if (references_.size() == 1 && references_.front().luma)
            comparison_.detail = detailOf(*references_.front().luma);
        return &references_.back();
    }

    std::optional<LumaPlane> lumaOrComplaint(const NSData& file) {
        Result<LumaPlane> luma = lumaOfFile(file);
        if (luma)
            return *std::move(luma);
        complain(luma.failure());
        return std::nullopt;
    }

    void measure(ComparedImage& image, const Reference& reference) {
        const std::optional<LumaPlane> luma = reference.luma ? lumaOrComplaint(*image.file) : std::nullopt;
        const auto similarity = luma ? structuralSimilarity(*luma, *reference.luma) : std::nullopt;
        if (!similarity)
            return;
        image.similarity = similarity->mean;
        comparison_.loss.add(similarity->loss);
    }

    const ConvertInput& input_;
    Comparison comparison_;
    std::shared_ptr<const ByteReader> file_; ///< null if it is not a picture
    std::vector<Reference> references_;
    ConversionRecipes withoutQuality_; ///< of results in formats without one, their quality set to 0
};

} // namespace

Comparison compared(const ConvertInput& input, const ConversionRecipes& recipes) {
    ComparisonRun run(input);
    for (const ConversionRecipe& recipe : recipes)
        run.add(recipe);
    return std::move(run).comparison();
}

} // namespace kestrine
