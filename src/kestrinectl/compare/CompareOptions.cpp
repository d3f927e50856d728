#include "kestrinectl/compare/CompareOptions.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/convert/ConvertRecipes.h"
#include "kestrinectl/sets/ChosenSets.h"
#include "kestrinectl/sets/SetNames.h"
#include "kestrinectl/text/NumberBetween.h"

#include <algorithm>

namespace kestrine {

namespace {

constexpr std::size_t maxResults = 24; // per picture; more cannot be told apart on a page

const OutputFormat& formatOfWord(const std::string& word) { return *formatNamed(word, outputFormats()); }

bool takesQuality(const std::string& format) { return formatOfWord(format).hasQuality; }

/// The values, or nullopt alone if there are none.
template <class Value>
std::vector<std::optional<Value>> valuesOrNone(const std::vector<Value>& values) {
    if (values.empty())
        return {std::nullopt};
    return {values.begin(), values.end()};
}

} // namespace

void CompareOptions::addTo(CLI::App& command) {
    command
        .add_option("--set", setNames,
                    "Set to apply: a name, or a position such as @2; may be repeated (default: the selected "
                    "sets, or none if an option gives a size, a format or a quality)")
        ->allow_extra_args(false)
        ->option_text("NAME");
    command
        .add_option("--quality", qualities,
                    "Qualities in percent, 0 to 100, for formats that have one (default without a set: 80)")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->check(numberBetween(0.0F, 100.0F))
        ->option_text("N[,N...]");
    command
        .add_option("--format", formats,
                    "Output formats: " + formatNames(outputFormats())
                        + " (default without a set: that of the file, or else jpeg, and png with "
                          "transparency)")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->check(formatOfResult(", or several with commas between them"))
        ->option_text("FORMAT[,FORMAT...]");
    look.addLookTo(command);
}

ResizeSets CompareOptions::sets() const {
    const bool isDescribed = !qualities.empty() || !formats.empty() || describeResult(look);
    if (setNames.empty() && isDescribed)
        return {};
    return chosenSets(PresetStore::load(), setNames, isDescribed, "--quality 60,80");
}

ConversionRecipes CompareOptions::recipes(const ResizeSets& sets) const {
    const bool someTakeQuality = formats.empty() || std::ranges::any_of(formats, takesQuality);
    ConversionRecipes recipes;
    for (const std::optional<std::string>& format : valuesOrNone(formats))
        for (const std::optional<float>& quality : valuesOrNone(qualities)) {
            ConvertOptions options = look;
            options.format = format;
            options.metadata = "none";
            if (!format || takesQuality(*format) || !someTakeQuality)
                options.quality = quality;
            for (const ConversionRecipe& recipe : recipesToReturn(options, sets))
                if (std::ranges::find(recipes, recipe) == recipes.end())
                    recipes.push_back(recipe);
        }
    if (recipes.size() > maxResults)
        throw CommandError("these options make " + std::to_string(recipes.size())
                               + " results per picture, and a page shows at most "
                               + std::to_string(maxResults)
                               + "; compare fewer sets, formats, qualities or sizes",
                           2);
    return recipes;
}

} // namespace kestrine
