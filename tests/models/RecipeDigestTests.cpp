#include "models/RecipeDigest.h"

#include <gtest/gtest.h>
#include <set>

namespace kestrine {
namespace {

TEST(RecipeDigest, everyChangeOfARecipeGivesAnotherText) {
    std::vector<ConversionRecipe> recipes(1);
    const auto add = [&](auto change) { change(recipes.emplace_back()); };
    add([](auto& r) { r.size = PixelSize{.rule = PixelSize::Rule::longest, .width = 1200}; });
    add([](auto& r) { r.size = PixelSize{.rule = PixelSize::Rule::width, .width = 1200}; });
    add([](auto& r) { r.size = PointLongest{1200}; });
    add([](auto& r) { r.size = PointRatio{0.5F}; });
    add([](auto& r) { r.enlarges = false; });
    add([](auto& r) { r.usesLanczos = false; });
    add([](auto& r) { r.convertsResolution = false; });
    add([](auto& r) { r.upright = UprightRule::always; });
    add([](auto& r) { r.background = RGBColor{1, 2, 3}; });
    add([](auto& r) { r.intoSRGB = true; });
    add([](auto& r) { r.format = {FormatRule::Choice::fixed, FileType::png}; });
    add([](auto& r) { r.quality = 0.7F; });
    add([](auto& r) { r.quality = 0.70001F; });
    add([](auto& r) { r.isLossless = true; });
    add([](auto& r) { r.isProgressive = true; });
    add([](auto& r) { r.effort = Effort::max; });
    add([](auto& r) { r.exif = ExifSelection::rights; });
    add([](auto& r) { r.maxBytes = 200'000; });
    add([](auto& r) { r.times = TimesRule::keep; });
    add([](auto& r) { r.copiesFitting = true; });
    add([](auto& r) { r.place.base = u"/a"; });
    add([](auto& r) { r.place.subfolder = u"/a"; });
    add([](auto& r) { r.place.name = *NameTemplate::parse("{stem}.{ext}"); });
    add([](auto& r) { r.place.setName = u"Web"; });
    std::set<std::string> texts;
    for (const ConversionRecipe& recipe : recipes) {
        EXPECT_EQ(textOf({recipe}), textOf({recipe}));
        texts.insert(textOf({recipe}));
        texts.insert(textOf({recipe, recipe}));
    }
    EXPECT_EQ(texts.size(), 2 * recipes.size());
}

} // namespace
} // namespace kestrine
