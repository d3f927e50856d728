// PlannedNames: the names that results will get, decided before anything is converted.
#pragma once

#include "kestrinectl/convert/ConvertResult.h"
#include "models/ResizeJob.h"

#include <optional>
#include <set>
#include <string>
#include <vector>

namespace kestrine {

/// The names for one job.
struct PlannedNames {
    std::vector<std::string> paths;           ///< by recipe; "" for no result
    bool fitsAlready = false;                 ///< the file to be replaced is as its result should be
    std::vector<ConvertComplaint> complaints; ///< why there is no result, as far as headers and names tell
};

/// What a job wants, before names are given.
struct WantedNames {
    std::vector<WantedResult> results;
    std::optional<ConvertComplaint> complaint; ///< why there are none
};

/// Gives names to the results of jobs. It remembers the names that it gave.
class NamePlanner {
public:
    NamePlanner(Openings openings, unsigned threads) : openings_(openings), threads_(threads) {}

    /// The names that the results of these jobs get if these and all earlier jobs succeed: never one that is
    /// in use, or promised to an earlier result. Reads only headers.
    std::vector<PlannedNames> plan(const std::vector<ResizeJob>& jobs);

private:
    PlannedNames planned(const ResizeJob& job, const WantedNames& wanted);
    Result<void> checkName(const std::string& path) const;
    bool isPromised(const std::string& place) const;
    std::string nameFor(const NSString& wanted, std::vector<EarlierResult>& earlier, const ResizeJob& job);

    const Openings openings_;
    const unsigned threads_;
    std::set<std::string> promised_; ///< without links in folders
};

} // namespace kestrine
