// RunLoop: one job and one progress line a file.
#pragma once

#include "commandline/PresetSelection.h"
#include "platform/host/process/StandardOutput.h"

namespace kestrine {

/// Writes the names of the sets, each used as format text, one a line.
void listSets(const ResizeSets& sets, StandardOutput& output);

/// Applies the sets to each file, in order. `PWD` is what file arguments are relative to; without it nothing
/// is touched. A file that fails, for whatever reason, completes its line like any other.
void convertFiles(const PresetSelection& selection, const OptionalString& PWD, StandardOutput& output);

/// The path for a file argument: as typed when it contains "/Volumes" or "~/", else below `PWD`, absolute
/// ones too.
OptionalString pathForArgument(const NSString& argument, const OptionalString& PWD);

} // namespace kestrine
