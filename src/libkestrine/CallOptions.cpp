#include "libkestrine/CallOptions.h"

#include "models/RecipeWords.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace kestrine {

namespace {

using nlohmann::json;
using Rule = PixelSize::Rule;

Failure mustBe(const std::string& what) { return {Reason::malformed, "must be " + what}; }

/// Options as they are read, before those that belong together are joined.
struct GivenOptions {
    CallOptions call;
    std::vector<PixelSize> sizes;
    std::optional<Gravity> gravity;
    std::optional<RGBColor> padding;
    bool hasQuality = false, hasEffort = false;

    ConversionRecipe& recipe() { return call.recipe; }
};

template <class Field, class Value>
Result<void> put(Field& field, Result<Value> value) {
    field = TRY(std::move(value));
    return {};
}

Result<std::string> stringIn(const json& value) {
    if (!value.is_string())
        return mustBe("a string");
    return value.get<std::string>();
}

/// What `read` makes of a string.
template <class Value>
Result<Value> worded(const json& value, Result<Value> (*read)(const std::string& word)) {
    return read(TRY(stringIn(value)));
}

Result<bool> truthIn(const json& value) {
    if (!value.is_boolean())
        return mustBe("true or false");
    return value.get<bool>();
}

Result<double> numberIn(const json& value, double low, double high, const char* range) {
    if (!value.is_number() || value.get<double>() < low || value.get<double>() > high)
        return mustBe(range);
    return value.get<double>();
}

Result<double> lengthIn(const json& value) {
    if (!value.is_number_unsigned() || value.get<std::uint64_t>() < 1
        || value.get<std::uint64_t>() > highestLength)
        return mustBe("a whole number from 1 to 1000000");
    return value.get<double>();
}

template <Rule rule>
Result<void> addLength(const json& value, GivenOptions& given) {
    const double length = TRY(lengthIn(value));
    given.sizes.push_back({.rule = rule, .width = length, .height = length});
    return {};
}

template <Rule rule>
Result<void> addBox(const json& value, GivenOptions& given) {
    const PixelBox box = TRY(worded(value, boxIn));
    given.sizes.push_back({.rule = rule, .width = double(box.width), .height = double(box.height)});
    return {};
}

Result<void> addPercentage(const json& value, GivenOptions& given) {
    const double percent = TRY(numberIn(value, 0.001, 100'000, "a number from 0.001 to 100000"));
    given.sizes.push_back({.rule = Rule::percent, .width = percent});
    return {};
}

Result<void> setFormat(const json& value, GivenOptions& given) {
    const OutputFormat* const format = formatNamed(TRY(stringIn(value)), outputFormats());
    if (format == nullptr)
        return mustBe(formatNames(outputFormats()));
    given.recipe().format = {FormatRule::Choice::fixed, format->type};
    return {};
}

Result<void> setQuality(const json& value, GivenOptions& given) {
    given.recipe().quality = static_cast<float>(TRY(numberIn(value, 0, 100, "a number from 0 to 100"))) / 100;
    given.hasQuality = true;
    return {};
}

Result<void> setMaxBytes(const json& value, GivenOptions& given) {
    given.recipe().maxBytes = TRY(bytesIn(value.is_string() ? value.get<std::string>() : value.dump()));
    return {};
}

Result<void> setUpright(const json& value, GivenOptions& given) {
    given.recipe().upright = TRY(truthIn(value)) ? UprightRule::always : UprightRule::never;
    return {};
}

Result<void> setMetadata(const json& value, GivenOptions& given) {
    const std::optional<ExifSelection> selection = TRY(worded(value, metadataNamed));
    given.recipe().exif = selection == ExifSelection::camera ? ExifSelection::withoutOwner : selection;
    return {};
}

Result<void> setEffort(const json& value, GivenOptions& given) {
    given.hasEffort = true;
    return put(given.recipe().effort, worded(value, effortNamed));
}

Result<void> setThreads(const json& value, GivenOptions& given) {
    if (value != 0 && value != 1)
        return mustBe("0 or 1");
    given.call.usesOneThread = value == 1;
    return {};
}

Result<void> setOverwrite(const json& value, GivenOptions& given) {
    given.call.overwrite = TRY(truthIn(value)) ? Overwrite::yes : Overwrite::no;
    return {};
}

struct Option {
    std::string_view name;
    Result<void> (*read)(const json& value, GivenOptions& given);
};

const Option options[] = {
    {"longest", addLength<Rule::longest>},
    {"width", addLength<Rule::width>},
    {"height", addLength<Rule::height>},
    {"percent", addPercentage},
    {"fit", addBox<Rule::inside>},
    {"cover", addBox<Rule::cover>},
    {"gravity", [](const json& v, GivenOptions& o) { return put(o.gravity, worded(v, gravityNamed)); }},
    {"pad", [](const json& v, GivenOptions& o) { return put(o.padding, worded(v, colorIn)); }},
    {"enlarge", [](const json& v, GivenOptions& o) { return put(o.recipe().enlarges, truthIn(v)); }},
    {"format", setFormat},
    {"quality", setQuality},
    {"lossless", [](const json& v, GivenOptions& o) { return put(o.recipe().isLossless, truthIn(v)); }},
    {"progressive", [](const json& v, GivenOptions& o) { return put(o.recipe().isProgressive, truthIn(v)); }},
    {"effort", setEffort},
    {"maxBytes", setMaxBytes},
    {"upright", setUpright},
    {"background",
     [](const json& v, GivenOptions& o) { return put(o.recipe().background, worded(v, colorIn)); }},
    {"metadata", setMetadata},
    {"profile",
     [](const json& v, GivenOptions& o) { return put(o.recipe().intoSRGB, worded(v, profileNamed)); }},
    {"acceptDamaged", [](const json& v, GivenOptions& o) { return put(o.call.acceptsDamaged, truthIn(v)); }},
    {"overwrite", setOverwrite},
    {"threads", setThreads},
};

/// "width" and "height" together stretch.
void joinWidthAndHeight(std::vector<PixelSize>& sizes) {
    if (sizes.size() != 2)
        return;
    const auto width = std::ranges::find(sizes, Rule::width, &PixelSize::rule),
               height = std::ranges::find(sizes, Rule::height, &PixelSize::rule);
    if (width != sizes.end() && height != sizes.end())
        sizes = {{.rule = Rule::stretch, .width = width->width, .height = height->height}};
}

Failure wrong(const std::string& text) { return {Reason::malformed, text}; }

Result<void> setSize(GivenOptions& given) {
    joinWidthAndHeight(given.sizes);
    if (given.sizes.size() > 1)
        return wrong("the options give more than one size");
    const auto rule = given.sizes.empty() ? std::nullopt : std::optional(given.sizes.front().rule);
    if (given.padding && rule != Rule::inside)
        return wrong("the option \"pad\" needs \"fit\"");
    if (given.gravity && rule != Rule::cover && !given.padding)
        return wrong("the option \"gravity\" needs \"cover\" or \"pad\"");
    if (!rule)
        return {};
    PixelSize& size = given.sizes.front();
    size.gravity = given.gravity.value_or(Gravity());
    size.padding = given.padding;
    given.recipe().size = size;
    return {};
}

Result<void> checkFormat(const GivenOptions& given) {
    const ConversionRecipe& recipe = given.call.recipe;
    if (recipe.isLossless && (given.hasQuality || recipe.maxBytes != 0))
        return wrong("the option \"lossless\" contradicts \"quality\" and \"maxBytes\"");
    if (recipe.format.choice != FormatRule::Choice::fixed)
        return {};
    const OutputFormat& format = outputFormat(recipe.format.type);
    const std::string needing = recipe.isLossless && !format.hasLossless         ? "lossless"
                                : recipe.isProgressive && !format.hasProgressive ? "progressive"
                                : given.hasEffort && !format.hasEffort           ? "effort"
                                : given.hasQuality && !format.hasQuality         ? "quality"
                                : recipe.maxBytes != 0 && !format.hasQuality     ? "maxBytes"
                                                                                 : "";
    if (needing.empty())
        return {};
    return wrong("the option \"" + needing + "\" has no effect on " + std::string(format.title));
}

Result<void> readOptions(const json& object, GivenOptions& given) {
    for (const auto& [name, value] : object.items()) {
        const auto* const option = std::ranges::find(options, name, &Option::name);
        if (option == std::end(options))
            return wrong("there is no option \"" + name + "\"");
        if (const Result<void> read = option->read(value, given); !read)
            return wrong("the option \"" + name + "\" " + read.failure().text);
    }
    return {};
}

} // namespace

Result<CallOptions> callOptionsIn(std::string_view text) {
    const json object = json::parse(text, nullptr, false);
    if (!object.is_object())
        return wrong("the options are not a JSON object");
    GivenOptions given{.call = {.recipe = usualRecipe()}};
    given.recipe().place = {.isReturned = true};
    TRY(readOptions(object, given));
    TRY(setSize(given));
    TRY(checkFormat(given));
    if (given.recipe().maxBytes != 0 && !given.hasQuality)
        given.recipe().quality = 1;
    return given.call;
}

} // namespace kestrine
