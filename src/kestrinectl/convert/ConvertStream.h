// ConvertStream: one picture from standard input to standard output.
#pragma once

#include "kestrinectl/convert/ConvertLines.h"
#include "models/ResizeJob.h"

namespace kestrine {

/// Reads standard input to its end and writes the result to standard output, messages to standard error.
/// Throws CommandError when there is no result.
void convertStream(const ConversionRecipe& recipe, JobPolicy policy, ConvertDetail detail);

} // namespace kestrine
