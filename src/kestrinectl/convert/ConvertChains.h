// ConvertChains: which conversions may run at the same time without an effect on the results.
#pragma once

#include "models/ResizeJob.h"

#include <vector>

namespace kestrine {

/// Positions of jobs that must be converted one after another, in this order.
using ConvertChain = std::vector<std::size_t>;

/// Splits the jobs into chains, ordered by their first jobs. Two jobs whose outputs may compete for a name
/// ("a.jpg", "a_1.jpg", ...) are in one chain, so that each output gets the name it would get if all jobs
/// were run in order. Opens files whose names depend on the picture, on `threads` threads.
std::vector<ConvertChain> independentChains(const std::vector<ResizeJob>& jobs, unsigned threads);

} // namespace kestrine
