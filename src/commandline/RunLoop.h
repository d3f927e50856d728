// RunLoop: one job and one progress line per file.
#pragma once

#include "commandline/PresetSelection.h"
#include "platform/host/process/StandardOutput.h"

namespace kestrine {

// When memory runs out before the first output, these functions throw std::bad_alloc. After that they write
// every line, because the lines themselves need no memory.

/// Writes the names of the sets, each used as a format string, one per line.
void listSets(const ResizeSets& sets, StandardOutput& output);

/// Applies the sets to each file, in order. File arguments are relative to `PWD`; without it no file
/// is changed. The line of a file is completed even if the job fails.
void convertFiles(const PresetSelection& selection, const OptionalString& PWD, StandardOutput& output);

/// The path for a file argument: unchanged if it contains "/Volumes" or "~/", else below `PWD`, even if it is
/// absolute.
OptionalString pathForArgument(const NSString& argument, const OptionalString& PWD);

} // namespace kestrine
