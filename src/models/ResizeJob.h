// ResizeJob: what a job does, as plain data, and doing it. ResizeUnit is its key-value face.
#pragma once

#include "models/ResizeSet.h"
#include "platform/host/Result.h"

#include <optional>
#include <string>
#include <vector>

namespace kestrine {

/// How strict a job is. The default is the quiet tool's way.
struct JobPolicy {
    /// Nothing changes unless there is a result: no folder is made, and an original goes to the trash only
    /// when its whole result is on the disk beside it.
    bool onlyWithResult = false;
    /// A picture of which the decoder had to make something up gives no result.
    bool refusesDamaged = false;
};

struct ResizeJob {
    NSString path;                 ///< of the file, in full; "" for none
    OptionalString rootPath;       ///< the folder that was handed in and in which the file was found
    OptionalString saveFolderPath; ///< the folder that holds the file
    ResizeSets sets;               ///< to apply, in order; none is null
    JobPolicy policy;

    /// Whether the result replaces the original: there is one set only, and it is a replacing one.
    bool replacesFile() const { return sets.size() == 1 && sets.front()->replaceFile() != 0; }
};

/// What became of one set of a job.
struct JobOutcome {
    NSString path; ///< of the output, written or not; "" when there was no folder for it
    bool isWritten = false;
    std::optional<Failure> failure;      ///< why nothing was written
    std::optional<Failure> damage;       ///< what the decoder had to make up, written or not
    bool isRefused = false;              ///< the damage is why nothing was written
    std::optional<Failure> trashFailure; ///< why the original that was to be replaced is still in its place
    std::string trashedPath;             ///< where the original lies in the trash; "" when it does not
};

/// Runs the job on this thread and returns one outcome per set, in their order. The file is opened
/// and decoded once, whatever the number of sets. One that the worker could not survive is not tried again.
/// What a set's conversion raises goes to the caller. From just before an original goes to the trash until
/// its result is published or has failed, the signals that would end the process wait.
std::vector<JobOutcome> runJob(const ResizeJob& job);

/// The path itself when its name is free, else the first free one of stem_1.ext, stem_2.ext, ... A dangling
/// link takes its name.
NSString uniqueFileName(const NSString& path);

} // namespace kestrine
