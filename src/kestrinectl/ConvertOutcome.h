// ConvertOutcome: what users are told about the results of one file.
#pragma once

#include "kestrinectl/ConvertInputs.h"
#include "kestrinectl/ConvertReport.h"
#include "models/ResizeJob.h"

namespace kestrine {

/// Adds the messages for one result of `input`.
void addOutcome(ConvertResult& result, const ConvertInput& input, const JobOutcome& outcome);

} // namespace kestrine
