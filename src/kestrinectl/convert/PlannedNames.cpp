#include "kestrinectl/convert/PlannedNames.h"

#include "kestrinectl/convert/ConvertInputs.h"
#include "kestrinectl/convert/ForEachPosition.h"
#include "platform/host/files/FileStatus.h"
#include "platform/imageio/PictureEngine.h"

#include <algorithm>

namespace kestrine {

namespace {

/// What a job wants, before names are given.
struct WantedNames {
    std::vector<NSString> paths;
    std::optional<Failure> failure;
};

WantedNames wantedBy(const ResizeJob& job, Openings openings) {
    WantedNames wanted;
    if (openings == Openings::all)
        if (const auto opened = openPicture(job.path.utf8()); !opened) {
            wanted.failure = opened.failure();
            return wanted;
        }
    wanted.paths = wantedPaths(job);
    return wanted;
}

} // namespace

std::vector<PlannedNames> NamePlanner::plan(const std::vector<ResizeJob>& jobs) {
    std::vector<WantedNames> wanted(jobs.size());
    forEachPosition(jobs.size(), threads_, [&](std::size_t i) { wanted[i] = wantedBy(jobs[i], openings_); });
    std::vector<PlannedNames> planned;
    for (std::size_t i = 0; i < jobs.size(); ++i) {
        const std::string vacated = jobs[i].replacesFile() ? placeOf(jobs[i].path.utf8()) : "";
        std::vector<EarlierResult> earlier = jobs[i].earlier;
        planned.push_back({.paths = {}, .failure = std::move(wanted[i].failure)});
        for (const NSString& path : wanted[i].paths)
            planned.back().paths.push_back(path.isEmpty() ? "" : nameFor(path, earlier, vacated));
    }
    return planned;
}

/// The path of the result of an earlier run, which is then taken out of `earlier`, or else the path with the
/// first free name, which is then in use. `vacated` is the path of the original that makes room for it; ""
/// for none.
std::string NamePlanner::nameFor(const NSString& wanted, std::vector<EarlierResult>& earlier,
                                 const std::string& vacated) {
    const auto found = std::ranges::find(earlier, wanted.utf8(), &EarlierResult::wanted);
    if (found != earlier.end()) {
        std::string path = std::move(found->path);
        earlier.erase(found);
        return path;
    }
    const NSString chosen = uniqueFileName(wanted, [&](const std::string& candidate) {
        const std::string place = placeOf(candidate);
        return promised_.contains(place) || (place != vacated && isTaken(candidate));
    });
    promised_.insert(placeOf(chosen.utf8()));
    return chosen.utf8();
}

} // namespace kestrine
