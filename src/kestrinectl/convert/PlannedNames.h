// PlannedNames: the names that results will get, decided before anything is converted.
#pragma once

#include "models/ResizeJob.h"

#include <optional>
#include <string>
#include <vector>

namespace kestrine {

/// The names for one job.
struct PlannedNames {
    std::vector<std::string> paths; ///< by recipe; "" for no result
    std::optional<Failure> failure; ///< why the picture cannot be opened
};

/// Which pictures are opened to find their names.
enum class Openings : bool {
    ifNeeded, ///< those whose names depend on the picture
    all,      ///< all of them, to find those that cannot be opened
};

/// Calls `take` for each job in their order with the names that its results get if every job has all of its
/// results: never one that is in use, or promised to an earlier result. Reads only headers, on `threads`
/// threads. Ends early after a stop signal.
void planNames(const std::vector<ResizeJob>& jobs, Openings openings, unsigned threads,
               const std::function<void(std::size_t, PlannedNames)>& take);

} // namespace kestrine
