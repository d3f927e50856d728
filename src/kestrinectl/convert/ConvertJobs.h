// ConvertJobs: a picture of a run of `convert` as a job, and the outcome.
#pragma once

#include "kestrinectl/convert/ConvertInputs.h"
#include "kestrinectl/convert/UpdateManifest.h"

#include <functional>
#include <optional>

namespace kestrine {

/// The job for an input, which is the number-th of so many.
ResizeJob jobFor(const ConvertInput& input, const ConversionRecipes& recipes, JobPolicy policy,
                 std::size_t number, std::size_t count);

/// What `work` says of a file of so many bytes, with the time that it took. Exceptions become complaints.
ConvertResult resultOf(const std::string& shown, std::uint64_t bytes,
                       const std::function<void(ConvertResult&)>& work);

/// The result of a file whose results are there and up to date; nullopt if it has to be converted.
std::optional<ConvertResult> resultIfCurrent(const ResizeJob& job, const ConvertInput& input,
                                             UpdateManifest& manifest);

/// Converts a file and adds the outcome to `result`. `manifest` may be null; else results of earlier runs are
/// replaced, and new ones noted.
void convertJob(ResizeJob job, const ConvertInput& input, UpdateManifest* manifest, ConvertResult& result);

} // namespace kestrine
