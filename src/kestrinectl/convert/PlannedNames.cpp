#include "kestrinectl/convert/PlannedNames.h"

#include "kestrinectl/GivenPaths.h"
#include "kestrinectl/convert/ConvertKinds.h"
#include "kestrinectl/convert/ConvertOutcome.h"
#include "kestrinectl/convert/ForEachPosition.h"
#include "kestrinectl/text/ShownPath.h"
#include "platform/host/files/FileDescriptor.h"
#include "platform/host/files/FileStatus.h"
#include "platform/host/files/PathParts.h"
#include "platform/imageio/PictureEngine.h"

#include <algorithm>
#include <cerrno>

namespace kestrine {

namespace {

ConvertComplaint complaintOf(const ResizeJob& job, const Failure& failure) {
    return {withoutPath(failure.text, job.path.utf8()), kindOf(failure.reason)};
}

/// Why the file must not be replaced.
std::optional<ConvertComplaint> objectionTo(const ResizeJob& job) {
    const auto opened = openPicture(job.path.utf8());
    if (!opened)
        return complaintOf(job, opened.failure());
    const Result<FileContents> contents = contentsOf(*opened);
    if (!contents)
        return complaintOf(job, contents.failure());
    const bool isOnePicture = contents->kind == FileContents::Kind::picture;
    return isOnePicture ? std::nullopt : std::optional(complaintOfMore(*contents));
}

WantedNames wantedBy(const ResizeJob& job, Openings openings) {
    WantedNames wanted{.results = wantedResults(job, openings), .complaint = {}};
    const bool fits = std::ranges::any_of(wanted.results, &WantedResult::fitsAlready);
    const bool isReplaced = job.replacesFile() && job.policy.replacesOnlyPictures;
    if (openings == Openings::all && isReplaced && !fits)
        wanted.complaint = objectionTo(job);
    return wanted;
}

} // namespace

std::vector<PlannedNames> NamePlanner::plan(const std::vector<ResizeJob>& jobs) {
    std::vector<WantedNames> wanted(jobs.size());
    forEachPosition(jobs.size(), threads_, [&](std::size_t i) { wanted[i] = wantedBy(jobs[i], openings_); });
    std::vector<PlannedNames> names;
    for (std::size_t i = 0; i < jobs.size(); ++i)
        names.push_back(planned(jobs[i], wanted[i]));
    return names;
}

PlannedNames NamePlanner::planned(const ResizeJob& job, const WantedNames& wanted) {
    if (wanted.complaint)
        return {.paths = {}, .complaints = {*wanted.complaint}};
    std::vector<EarlierResult> earlier = job.earlier;
    PlannedNames names;
    for (const WantedResult& result : wanted.results) {
        names.fitsAlready = result.fitsAlready;
        names.paths.push_back(result.path.isEmpty() ? "" : nameFor(result.path, earlier, job));
        if (result.failure && openings_ == Openings::all)
            names.complaints.push_back(complaintOf(job, *result.failure));
        if (const Result<void> possible = checkName(names.paths.back()); !possible) {
            names.complaints.push_back(complaintOf(job, possible.failure()));
            names.paths.back().clear();
        }
    }
    return names;
}

/// Fails if no file can have the name of the path, where its folder is or will be; never for "".
Result<void> NamePlanner::checkName(const std::string& path) const {
    if (path.empty())
        return {};
    const std::string folder = existingPartOf(folderOf(path)), place = placeOf(path);
    bool isBelowFile = !folderExists(folder);
    for (std::string above = folderOf(place); !isBelowFile && above.size() > 1; above = folderOf(above))
        isBelowFile = promised_.contains(above);
    if (isBelowFile)
        return systemFailure("cannot create the folder " + folderOf(path), ENOTDIR);
    return checkNameIsPossible(joinedPath(folder, nameOf(path)));
}

/// Whether an earlier result has this path, or needs a folder there.
bool NamePlanner::isPromised(const std::string& place) const {
    const auto inside = promised_.lower_bound(place + '/');
    return promised_.contains(place) || (inside != promised_.end() && inside->starts_with(place + '/'));
}

/// The path of the result of an earlier run, which is then taken out of `earlier`, or else the path with the
/// first free name, which is then in use. An original that is replaced makes room for it.
std::string NamePlanner::nameFor(const NSString& wanted, std::vector<EarlierResult>& earlier,
                                 const ResizeJob& job) {
    const auto found = std::ranges::find(earlier, wanted.utf8(), &EarlierResult::wanted);
    if (found != earlier.end()) {
        std::string path = std::move(found->path);
        earlier.erase(found);
        return path;
    }
    const std::string vacated = job.replacesFile() ? placeOf(job.path.utf8()) : "";
    const bool isAbandoned = job.recorder != nullptr && !isPromised(placeOf(wanted.utf8()))
                             && job.recorder->takeAbandonedResult(wanted.utf8());
    const NSString chosen = isAbandoned ? wanted : uniqueFileName(wanted, [&](const std::string& candidate) {
        const std::string place = placeOf(candidate);
        return isPromised(place) || (place != vacated && isTaken(candidate));
    });
    promised_.insert(placeOf(chosen.utf8()));
    return chosen.utf8();
}

} // namespace kestrine
