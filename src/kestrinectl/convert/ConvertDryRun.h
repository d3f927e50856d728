// ConvertDryRun: which names a conversion would give its results.
#pragma once

#include "kestrinectl/convert/ConvertResult.h"
#include "models/ResizeJob.h"

namespace kestrine {

/// One result per job, in their order: the names that its results would get if every job had all of its
/// results. Reads only headers, and writes nothing. Ends early after a stop signal. `shown` has the names of
/// the inputs.
std::vector<ConvertResult> dryRun(const std::vector<ResizeJob>& jobs, const std::vector<std::string>& shown,
                                  unsigned threads);

} // namespace kestrine
