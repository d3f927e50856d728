// ConvertDryRun: which names a conversion would give its results.
#pragma once

#include "kestrinectl/convert/ConvertResult.h"
#include "kestrinectl/convert/PlannedNames.h"

namespace kestrine {

/// What would come of these jobs, in their order. `shown` has the names of the inputs. The planner opens all
/// pictures.
std::vector<ConvertResult> dryRun(const std::vector<ResizeJob>& jobs, const std::vector<std::string>& shown,
                                  NamePlanner& planner);

} // namespace kestrine
