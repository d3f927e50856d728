#include "kestrinectl/convert/ConvertDryRun.h"

#include "kestrinectl/convert/ConvertKinds.h"
#include "kestrinectl/convert/ConvertOutcome.h"
#include "kestrinectl/convert/PlannedNames.h"
#include "kestrinectl/text/ShownPath.h"
#include "models/RecipeConversion.h"

namespace kestrine {

namespace {

void addPlanned(ConvertResult& result, const ConversionRecipe& recipe, const std::string& path) {
    result.outputs.push_back({.path = path, .set = setOf(recipe), .format = namedFormat(recipe.format)});
    if (const auto warning = misleadingName(recipe, result.outputs.back()))
        result.warn(*warning);
}

} // namespace

std::vector<ConvertResult> dryRun(const std::vector<ResizeJob>& jobs, const std::vector<std::string>& shown,
                                  unsigned threads) {
    std::vector<ConvertResult> results;
    planNames(jobs, Openings::all, threads, [&](std::size_t i, const PlannedNames& names) {
        ConvertResult& result = results.emplace_back(ConvertResult{.source = shown[i]});
        if (names.failure)
            result.complain(withoutPath(names.failure->text, jobs[i].path.utf8()),
                            kindOf(names.failure->reason));
        else
            result.status = ConvertStatus::would;
        for (std::size_t k = 0; k < names.paths.size(); ++k)
            if (!names.paths[k].empty())
                addPlanned(result, jobs[i].recipes[k], names.paths[k]);
    });
    return results;
}

} // namespace kestrine
