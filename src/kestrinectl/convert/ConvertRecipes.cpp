#include "kestrinectl/convert/ConvertRecipes.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/GivenPaths.h"
#include "kestrinectl/sets/SetNames.h"
#include "kestrinectl/text/Words.h"
#include "models/RecipeWords.h"

#include <algorithm>

namespace kestrine {

namespace {

using Rule = PixelSize::Rule;

constexpr const char* nameForSeveralSizes = "{stem}-{width}.{ext}";

class WrongOptions : public CommandError {
public:
    explicit WrongOptions(const std::string& sentence)
        : CommandError(sentence + "; 'kestrinectl help convert' explains the options", 2) {}
};

/// One of the options that give sizes.
struct GivenSize {
    const char* option;
    std::vector<PixelSize> sizes;
};

void addLengths(std::vector<GivenSize>& given, const char* option, Rule rule,
                const std::optional<std::string>& word) {
    if (!word)
        return;
    GivenSize list{option, {}};
    const std::vector<std::uint32_t> lengths = *lengthsIn(*word);
    for (const std::uint32_t length : lengths)
        list.sizes.push_back({.rule = rule, .width = double(length), .height = double(length)});
    given.push_back(std::move(list));
}

void addPercentages(std::vector<GivenSize>& given, const std::optional<std::string>& word) {
    if (!word)
        return;
    GivenSize list{"--percent", {}};
    const std::vector<double> percentages = *percentagesIn(*word);
    for (const double percentage : percentages)
        list.sizes.push_back({.rule = Rule::percent, .width = percentage});
    given.push_back(std::move(list));
}

void addBox(std::vector<GivenSize>& given, const char* option, Rule rule,
            const std::optional<std::string>& word) {
    if (!word)
        return;
    const PixelBox box = *boxIn(*word);
    given.push_back({option, {{.rule = rule, .width = double(box.width), .height = double(box.height)}}});
}

/// --width and --height together give one size.
void joinWidthAndHeight(std::vector<GivenSize>& given) {
    if (given.size() != 2 || given[0].sizes.front().rule != Rule::width
        || given[1].sizes.front().rule != Rule::height)
        return;
    if (given[0].sizes.size() > 1 || given[1].sizes.size() > 1)
        throw WrongOptions("--width and --height together take one number each");
    const double height = given[1].sizes.front().height;
    given.pop_back();
    given.front().sizes.front().rule = Rule::stretch;
    given.front().sizes.front().height = height;
}

bool givesSize(const ConvertOptions& options) {
    return options.longest || options.width || options.height || options.percent || options.fit
           || options.cover;
}

/// The sizes that the options ask for; empty if they ask for no size.
std::vector<PixelSize> sizesOf(const ConvertOptions& options) {
    std::vector<GivenSize> given;
    addLengths(given, "--longest", Rule::longest, options.longest);
    addLengths(given, "--width", Rule::width, options.width);
    addLengths(given, "--height", Rule::height, options.height);
    addPercentages(given, options.percent);
    addBox(given, "--fit", Rule::inside, options.fit);
    addBox(given, "--cover", Rule::cover, options.cover);
    joinWidthAndHeight(given);
    if (given.size() > 1)
        throw WrongOptions(std::string(given[0].option) + " and " + given[1].option
                           + " contradict each other: both give a size");
    if (given.empty())
        return {};
    std::vector<PixelSize>& sizes = given.front().sizes;
    for (PixelSize& size : sizes) {
        size.gravity = options.gravity ? *gravityNamed(*options.gravity) : Gravity{};
        if (options.pad)
            size.padding = *colorIn(*options.pad);
    }
    for (auto size = sizes.begin(); size != sizes.end(); ++size)
        sizes.erase(std::remove(size + 1, sizes.end(), *size), sizes.end());
    return sizes;
}

NSString absoluteFolder(const std::string& folder) {
    return NSString::fromUTF8(absolutePath(typedWord(folder)).native());
}

void changePlace(ResultPlace& place, const ConvertOptions& options) {
    if (options.replaces)
        place.replaces = true;
    if (!options.out && !options.name)
        return;
    if (place.replaces && !options.out)
        place.subfolder = std::nullopt; // the result would have gone beside the original
    place.replaces = false;
    if (options.out)
        place.base = absoluteFolder(*options.out);
    if (!options.name)
        return;
    place.name = *NameTemplate::parse(typedWord(*options.name));
    if (options.out) {
        place.subfolder = std::nullopt;
        place.keepsTree = false;
    }
}

/// What results carry beside the pixels.
void changeProperties(ConversionRecipe& recipe, const ConvertOptions& options) {
    const bool hasSet = recipe.place.setName.has_value();
    const std::optional<std::string> metadata = options.exif ? "exif" : options.metadata;
    if (metadata)
        recipe.exif = *metadataNamed(*metadata);
    if (recipe.exif == ExifSelection::camera && !hasSet)
        recipe.exif = ExifSelection::withoutOwner;
    if (options.times)
        recipe.times = *timesNamed(*options.times);
    if (options.profile)
        recipe.intoSRGB = *profileNamed(*options.profile);
}

void changeRecipe(ConversionRecipe& recipe, const ConvertOptions& options) {
    if (options.format)
        recipe.format = {FormatRule::Choice::fixed, formatNamed(*options.format, outputFormats())->type};
    if (options.quality)
        recipe.quality = *options.quality / 100.0F;
    recipe.isLossless = options.isLossless;
    recipe.isProgressive = options.isProgressive;
    if (options.effort)
        recipe.effort = *effortNamed(*options.effort);
    if (options.maxBytes) {
        recipe.maxBytes = *bytesIn(*options.maxBytes);
        recipe.quality = options.quality ? recipe.quality : 1;
    }
    if (options.upright)
        recipe.upright = *options.upright ? UprightRule::always : UprightRule::never;
    if (options.background)
        recipe.background = *colorIn(*options.background);
    recipe.enlarges = !options.keepsSmall;
    recipe.copiesFitting = options.skipsFitting;
    changeProperties(recipe, options);
    changePlace(recipe.place, options);
}

void checkPlaces(const ConvertOptions& options, bool hasSets) {
    if (options.replaces && (options.out || options.name))
        throw WrongOptions(std::string("--replace and ") + (options.out ? "--out" : "--name")
                           + " contradict each other: both give the results a place");
    if (options.out == "-")
        throw WrongOptions(
            "--out takes a folder; the argument - writes to standard output, and ./- is a folder "
            "of that name");
    if (!hasSets && !options.replaces && !options.out && !options.name)
        throw WrongOptions("the results need a place: give --out FOLDER, --name TEMPLATE or --replace");
}

void checkSizes(const ConvertOptions& options, bool hasSets) {
    if (options.pad && !options.fit)
        throw WrongOptions("--pad needs --fit");
    if (options.gravity && !options.cover && !options.pad)
        throw WrongOptions("--gravity needs --cover or --pad");
    if (options.exif && options.metadata && options.metadata != "exif")
        throw WrongOptions("--exif and --metadata " + *options.metadata + " contradict each other");
    if (options.keepsSmall && !hasSets && !givesSize(options))
        throw WrongOptions("--no-enlarge needs a size, such as --longest 1200");
}

/// Refuses an option that was given but has no effect on the format of some recipe.
void checkEffect(const char* option, bool isGiven, bool OutputFormat::*hasEffect,
                 const ConversionRecipes& recipes) {
    for (const ConversionRecipe& recipe : recipes)
        if (isGiven && recipe.format.choice == FormatRule::Choice::fixed
            && !(outputFormat(recipe.format.type).*hasEffect))
            throw WrongOptions(std::string(option) + " has no effect on "
                               + std::string(outputFormat(recipe.format.type).title));
}

void checkLossless(const ConvertOptions& options, const ConversionRecipes& recipes) {
    if (options.isLossless && (options.quality || options.maxBytes))
        throw WrongOptions(std::string("--lossless and ") + (options.quality ? "--quality" : "--max-bytes")
                           + " contradict each other");
    checkEffect("--lossless", options.isLossless, &OutputFormat::hasLossless, recipes);
    checkEffect("--progressive", options.isProgressive, &OutputFormat::hasProgressive, recipes);
    checkEffect("--effort", options.effort.has_value(), &OutputFormat::hasEffort, recipes);
}

void checkQuality(const ConvertOptions& options, const ConversionRecipes& recipes) {
    const auto ignoresQuality = [](const ConversionRecipe& recipe) {
        return recipe.format.choice == FormatRule::Choice::fixed
               && !outputFormat(recipe.format.type).hasQuality;
    };
    if (options.quality && std::ranges::all_of(recipes, ignoresQuality))
        throw WrongOptions("--quality has no effect on "
                           + std::string(outputFormat(recipes.front().format.type).title));
    const auto fixed = std::ranges::find_if(recipes, ignoresQuality);
    if (options.maxBytes && fixed != recipes.end())
        throw WrongOptions("--max-bytes needs a format with a quality, and "
                           + std::string(outputFormat(fixed->format.type).title) + " has none");
}

/// The recipes, whether or not their results have a place.
ConversionRecipes recipesAnywhere(const ConvertOptions& options, const ResizeSets& sets) {
    const std::vector<PixelSize> sizes = sizesOf(options);
    checkSizes(options, !sets.empty());
    ConversionRecipes recipes;
    for (ConversionRecipe recipe : sets.empty() ? ConversionRecipes{usualRecipe()} : recipesOf(sets)) {
        changeRecipe(recipe, options);
        if (sizes.size() > 1 && !recipe.place.name)
            recipe.place.name = *NameTemplate::parse(nameForSeveralSizes);
        if (sizes.empty())
            recipes.push_back(recipe);
        for (const PixelSize& size : sizes) {
            recipe.size = size;
            recipes.push_back(recipe);
        }
    }
    checkQuality(options, recipes);
    checkLossless(options, recipes);
    return recipes;
}

} // namespace

bool describeResult(const ConvertOptions& options) {
    return givesSize(options) || options.format || options.quality || options.isLossless
           || options.isProgressive || options.effort || options.maxBytes;
}

ConversionRecipes recipesFor(const ConvertOptions& options, const ResizeSets& sets) {
    checkPlaces(options, !sets.empty());
    ConversionRecipes recipes = recipesAnywhere(options, sets);
    if (options.replaces && recipes.size() > 1)
        throw WrongOptions("--replace takes one result per file, and these options make "
                           + std::to_string(recipes.size()));
    return recipes;
}

ConversionRecipe recipeForStream(const ConvertOptions& options, const ResizeSets& sets) {
    for (const auto& [name, isGiven] : {std::pair{"--out", options.out.has_value()},
                                        {"--name", options.name.has_value()},
                                        {"--replace", options.replaces}})
        if (isGiven)
            throw WrongOptions(std::string("- and ") + name
                               + " contradict each other: the result goes to standard output");
    const ConversionRecipes recipes = recipesToReturn(options, sets);
    if (recipes.size() > 1)
        throw WrongOptions("- takes one result, and these options make " + std::to_string(recipes.size()));
    return recipes.front();
}

ConversionRecipes recipesToReturn(const ConvertOptions& options, const ResizeSets& sets) {
    ConversionRecipes recipes = recipesAnywhere(options, sets);
    for (ConversionRecipe& recipe : recipes)
        recipe.place = {.isReturned = true, .setName = recipe.place.setName};
    return recipes;
}

} // namespace kestrine
