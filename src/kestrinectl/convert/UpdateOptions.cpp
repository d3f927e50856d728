#include "kestrinectl/convert/UpdateOptions.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/GivenPaths.h"
#include "kestrinectl/text/NonEmpty.h"
#include "kestrinectl/text/Words.h"

#include <algorithm>

namespace kestrine {

void UpdateOptions::addTo(CLI::App& command) {
    CLI::Option* update =
        command.add_flag("--update", isOn,
                         "Convert only files whose results are missing or out of date; replace results of "
                         "earlier runs, and nothing "
                         "else (default: every file is converted, and no result is replaced)");
    command.add_flag("--force", remakesAll, "With --update, make all results again")->needs(update);
    command
        .add_option("--manifest", manifest,
                    "With --update, the file that remembers results (default: one per --out folder in "
                    "~/.local/state/kestrine)")
        ->check(nonEmpty())
        ->needs(update)
        ->option_text("FILE");
    command
        .add_flag("!--no-wait", waits,
                  "With --update, fail while another run uses the same manifest (default: wait for it)")
        ->needs(update);
}

void UpdateOptions::changePlaces(ConversionRecipes& recipes) const {
    for (ConversionRecipe& recipe : recipes)
        if (isOn && recipe.place.base)
            recipe.place.base = NSString::fromUTF8(canonicalPath(recipe.place.base->utf8()).native());
}

std::unique_ptr<UpdateManifest> UpdateOptions::open(const ConversionRecipes& recipes,
                                                    const std::string& outFolder, bool isDryRun) const {
    if (!isOn)
        return nullptr;
    if (replacesFiles(recipes))
        throw CommandError(
            "--update and replacing contradict each other: a replaced original is gone; give --out", 2);
    const std::string path =
        manifest ? absolutePath(typedWord(*manifest)).native() : UpdateManifest::pathFor(outFolder);
    const auto paths = manifest ? UpdateManifest::Paths::relative : UpdateManifest::Paths::absolute;
    if (isDryRun)
        return std::make_unique<UpdateManifest>(path, paths);
    return std::make_unique<UpdateManifest>(path, waits ? WhenBusy::waits : WhenBusy::fails, paths);
}

} // namespace kestrine
