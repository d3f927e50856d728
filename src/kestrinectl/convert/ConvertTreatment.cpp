#include "kestrinectl/convert/ConvertTreatment.h"

#include "kestrinectl/convert/ConvertRecipes.h"
#include "kestrinectl/sets/ChosenSets.h"
#include "kestrinectl/text/NumberBetween.h"

namespace kestrine {

namespace {

constexpr std::uint64_t highestPixelLimit = std::uint64_t{maximumSide} * maximumSide;

} // namespace

void ConvertTreatment::addTo(CLI::App& command) {
    command
        .add_option(
            "--set", setNames,
            "Set to apply: a name, or a position such as @2; may be repeated (default: the selected sets, or "
            "none if an option gives a size, a format or a quality)")
        ->option_text("NAME")
        ->allow_extra_args(false);
    options.addTo(command);
    command.add_flag("--accept-damaged", acceptsDamaged,
                     "Convert damaged pictures of which a part can be shown, with a warning "
                     "(default: an error, nothing is written)");
    command.add_flag(
        "--first-only", firstOnly,
        "Of files with several frames, pages or layers, and of raw and vector files, convert the first "
        "picture without a warning, also where it replaces the whole file (default: a warning, and such "
        "files are not replaced, which is an error)");
}

void ConvertTreatment::addLimitsTo(CLI::App& command) {
    command
        .add_option("--max-pixels", maxPixels,
                    "Refuse pictures and results with more than N pixels (default: 1073741824)")
        ->check(numberBetween(std::uint64_t{1}, highestPixelLimit))
        ->option_text("N");
}

PresetStore ConvertTreatment::presets() const {
    const bool usesSets = !setNames.empty() || !describeResult(options);
    return usesSets ? PresetStore::load() : PresetStore::loadOrWarn();
}

ResizeSets ConvertTreatment::sets(const PresetStore& store) const {
    return chosenSets(store, setNames, describeResult(options),
                      "--longest 1200 --out small, or --percent 100 --out same for the same size");
}

JobPolicy ConvertTreatment::policy() const {
    return {.onlyWithResult = true, .refusesDamaged = !acceptsDamaged, .replacesOnlyPictures = !firstOnly};
}

} // namespace kestrine
