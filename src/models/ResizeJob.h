// ResizeJob: a job as plain data, and its execution. ResizeUnit is its key-value interface.
#pragma once

#include "models/ResizeSet.h"
#include "platform/host/Result.h"
#include "platform/imageio/FileContents.h"

#include <optional>
#include <string>
#include <vector>

namespace kestrine {

/// How strict a job is. The default is that of `kestrine`.
struct JobPolicy {
    /// Nothing changes unless there is a result: no folder is created, and an original goes to the trash only
    /// when its complete result is on the disk beside it.
    bool onlyWithResult = false;
    /// A damaged picture, for which the decoder had to invent pixels, gives no result.
    bool refusesDamaged = false;
    /// A file that holds more than one picture (see FileContents) is not replaced, because the rest of it
    /// would be lost.
    bool replacesOnlyPictures = false;
};

struct ResizeJob {
    NSString path;                 ///< the full path of the file; "" for none
    OptionalString rootPath;       ///< the given folder in which the file was found
    OptionalString saveFolderPath; ///< the folder that holds the file
    ResizeSets sets;               ///< to apply, in order; none is null
    JobPolicy policy;

    /// Whether the result replaces the original: there is one set only, and it is a replacing one.
    bool replacesFile() const { return sets.size() == 1 && sets.front()->replaceFile() != 0; }
};

/// Why the policy of a job does not allow a result.
enum class Refusal : std::uint8_t { none, damaged, holdsMore };

/// The result of one set of a job.
struct JobOutcome {
    NSString path; ///< of the output, written or not; "" when there was no folder for it
    bool isWritten = false;
    std::optional<Failure> failure;      ///< why nothing was written
    std::optional<Failure> damage;       ///< why the decoder had to invent pixels, written or not
    FileContents contents;               ///< of the file, if the policy asks for them
    Refusal refusal = Refusal::none;     ///< why nothing was written, with `failure`
    std::optional<Failure> trashFailure; ///< why the original to be replaced is still in its place
    std::string trashedPath;             ///< the original's path in the trash; "" when it is not there
};

/// Runs the job on this thread and returns one outcome per set, in their order. The file is opened once, and
/// decoded once if there is memory for its pixels, whatever the number of sets. A file that ended the process
/// that decoded it, or took too much time, is not tried again. Exceptions raised by a conversion reach the
/// caller. Signals that would end the process are blocked from just before an original goes to the trash
/// until its result is published or has failed.
std::vector<JobOutcome> runJob(const ResizeJob& job);

/// The path itself when its name is free, else the first free one of stem_1.ext, stem_2.ext, ... A dangling
/// link counts as an existing file.
NSString uniqueFileName(const NSString& path);

} // namespace kestrine
