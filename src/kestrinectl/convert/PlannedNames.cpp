#include "kestrinectl/convert/PlannedNames.h"

#include "kestrinectl/convert/ConvertInputs.h"
#include "kestrinectl/convert/ForEachPosition.h"
#include "platform/host/files/FileStatus.h"
#include "platform/host/process/StopSignals.h"
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

std::string nameFor(const NSString& wanted, const ResizeJob& job, const std::string& vacated,
                    PromisedNames& names) {
    const auto earlier = std::ranges::find(job.earlier, wanted.utf8(), &EarlierResult::wanted);
    return earlier != job.earlier.end() ? earlier->path : names.promise(wanted, vacated);
}

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

void planNames(const std::vector<ResizeJob>& jobs, Openings openings, unsigned threads,
               const std::function<void(std::size_t, PlannedNames)>& take) {
    constexpr std::size_t batch = 1024; // of which the wanted names are kept
    PromisedNames names;
    std::vector<WantedNames> wanted;
    for (std::size_t begin = 0; begin < jobs.size() && StopSignalsNoted::noted() == 0; begin += batch) {
        wanted.assign(std::min(batch, jobs.size() - begin), {});
        forEachPosition(wanted.size(), threads,
                        [&](std::size_t i) { wanted[i] = wantedBy(jobs[begin + i], openings); });
        for (std::size_t i = 0; i < wanted.size(); ++i) {
            const ResizeJob& job = jobs[begin + i];
            const std::string vacated = job.replacesFile() ? placeOf(job.path.utf8()) : "";
            PlannedNames planned{.paths = {}, .failure = wanted[i].failure};
            for (const NSString& path : wanted[i].paths)
                planned.paths.push_back(path.isEmpty() ? "" : nameFor(path, job, vacated, names));
            take(begin + i, std::move(planned));
        }
    }
}

} // namespace kestrine
