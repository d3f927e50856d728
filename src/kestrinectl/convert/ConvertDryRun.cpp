#include "kestrinectl/convert/ConvertDryRun.h"

#include "kestrinectl/convert/ConvertInputs.h"
#include "kestrinectl/convert/ConvertKinds.h"
#include "kestrinectl/convert/ConvertOutcome.h"
#include "kestrinectl/convert/ForEachPosition.h"
#include "kestrinectl/text/ShownPath.h"
#include "models/RecipeConversion.h"
#include "platform/host/files/FileStatus.h"
#include "platform/imageio/PictureEngine.h"

#include <algorithm>
#include <set>

namespace kestrine {

namespace {

/// The names that are in use after the results so far.
class PromisedNames {
public:
    /// The first free name for a result that wants `path`, which is then in use. `vacated` is the path of the
    /// original that makes room for it; "" for none.
    std::string promise(const NSString& path, const std::string& vacated) {
        const NSString chosen = uniqueFileName(path, [&](const std::string& candidate) {
            const std::string place = placeOf(candidate);
            return promised_.contains(place) || (place != vacated && isTaken(candidate));
        });
        promised_.insert(placeOf(chosen.utf8()));
        return chosen.utf8();
    }

private:
    std::set<std::string> promised_;
};

void addPlanned(ConvertResult& result, const ConversionRecipe& recipe, const std::string& path) {
    result.outputs.push_back({.path = path, .set = setOf(recipe), .format = namedFormat(recipe.format)});
    if (const auto warning = misleadingName(recipe, result.outputs.back()))
        result.warn(*warning);
}

std::string nameFor(const NSString& wanted, const ResizeJob& job, const std::string& vacated,
                    PromisedNames& names) {
    const auto earlier = std::ranges::find(job.earlier, wanted.utf8(), &EarlierResult::wanted);
    return earlier != job.earlier.end() ? earlier->path : names.promise(wanted, vacated);
}

} // namespace

std::vector<ConvertResult> dryRun(const std::vector<ResizeJob>& jobs, const std::vector<std::string>& shown,
                                  unsigned threads) {
    std::vector<std::vector<NSString>> wanted(jobs.size());
    std::vector<ConvertResult> results(jobs.size());
    forEachPosition(jobs.size(), threads, [&](std::size_t i) {
        const std::string path = jobs[i].path.utf8();
        if (const auto opened = openPicture(path))
            wanted[i] = wantedPaths(jobs[i]);
        else
            results[i].complain(withoutPath(opened.failure().text, path), kindOf(opened.failure().reason));
    });
    PromisedNames names;
    for (std::size_t i = 0; i < jobs.size(); ++i) {
        results[i].source = shown[i];
        if (results[i].complaints.empty())
            results[i].status = ConvertStatus::would;
        const std::string vacated = jobs[i].replacesFile() ? placeOf(jobs[i].path.utf8()) : "";
        for (std::size_t k = 0; k < wanted[i].size(); ++k)
            if (!wanted[i][k].isEmpty())
                addPlanned(results[i], jobs[i].recipes[k], nameFor(wanted[i][k], jobs[i], vacated, names));
    }
    return results;
}

} // namespace kestrine
