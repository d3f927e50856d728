#include "kestrinectl/convert/ConvertDryRun.h"

#include "kestrinectl/convert/ConvertOutcome.h"
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
                                  NamePlanner& planner) {
    const std::vector<PlannedNames> planned = planner.plan(jobs);
    std::vector<ConvertResult> results;
    for (std::size_t i = 0; i < jobs.size(); ++i) {
        ConvertResult& result = results.emplace_back(ConvertResult{.source = shown[i]});
        result.status = planned[i].fitsAlready ? ConvertStatus::skipped : ConvertStatus::would;
        for (const ConvertComplaint& complaint : planned[i].complaints)
            result.complain(complaint.text, complaint.kind);
        if (planned[i].fitsAlready)
            result.reason = reasonOfFitting;
        for (std::size_t k = 0; k < planned[i].paths.size(); ++k)
            if (!planned[i].paths[k].empty())
                addPlanned(result, jobs[i].recipes[k], planned[i].paths[k]);
    }
    return results;
}

} // namespace kestrine
