// ResizeJob: a job as plain data, and its execution. ResizeUnit is its key-value interface.
#pragma once

#include "models/ChangeRecorder.h"
#include "models/ConversionRecipe.h"
#include "platform/foundation/NSData.h"
#include "platform/host/Result.h"
#include "platform/host/files/ByteReader.h"
#include "platform/imageio/FileContents.h"

#include <functional>
#include <memory>
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
    ConversionRecipes recipes;     ///< to apply, in order
    JobPolicy policy;
    std::size_t number = 1, count = 1;         ///< the file is the number-th of so many
    std::shared_ptr<const ByteReader> content; ///< null: that of the file at `path`
    ChangeRecorder* recorder = nullptr;        ///< may be null; must outlive the run of the job
    std::vector<EarlierResult> earlier;        ///< each is replaced by a result that wants the same name
    /// Where the results go, in the order of the recipes, whose places do not count then; "" for a result
    /// that is not to be made. If the vector is empty, the recipes say where. A file that is there already is
    /// never replaced: it counts as the result if its content is the same, and else there is no result.
    std::vector<NSString> fixedPaths;

    bool replacesFile() const { return replacesFiles(recipes); }
};

/// Why the policy of a job does not allow a result.
enum class Refusal : std::uint8_t { none, damaged, holdsMore, changed };

/// The result of one recipe of a job.
struct JobOutcome {
    NSString path;         ///< of the output, written or not; "" when there was no folder for it
    std::string takenPath; ///< the path that it should have, if another file has it; else ""
    bool isWritten = false;
    bool wasThere = false;    ///< `isWritten`, by an earlier run: a fixed path had the same content already
    bool isRepeated = false;  ///< nothing was made, since an earlier recipe of the job gave the same result
    bool fitsAlready = false; ///< the file was not converted, since it is as the result should be
    std::shared_ptr<const NSData> data;   ///< of a result that is returned and not written; else nil
    const OutputFormat* format = nullptr; ///< null when there was none
    std::uint32_t width = 0, height = 0;  ///< in pixels; 0 when there was no result
    std::uint64_t bytes = 0;              ///< the length of the result; 0 when there was none
    bool isNotUpright = false; ///< whether it is not upright although the file says how it should be turned
    std::optional<Failure> failure;      ///< why nothing was written
    std::optional<Failure> damage;       ///< why the decoder had to invent pixels, written or not
    FileContents contents;               ///< of the file, if the policy asks for them
    Refusal refusal = Refusal::none;     ///< why nothing was written, with `failure`
    std::optional<Failure> trashFailure; ///< why the original to be replaced is still in its place
    std::string trashedPath;             ///< the original's path in the trash; "" when it is not there

    bool hasResult() const { return isRepeated || isWritten || data != nullptr || (fitsAlready && !failure); }
};

/// Runs the job on this thread and returns one outcome per recipe, in their order. The file is opened once,
/// and decoded once if there is memory for its pixels, whatever the number of recipes. A file that ended the
/// process that decoded it, or took too much time, is not tried again. Exceptions raised by a conversion
/// reach the caller. Signals that would end the process are blocked from just before an original goes to the
/// trash until its result is published or has failed.
std::vector<JobOutcome> runJob(const ResizeJob& job);

/// Which pictures are opened to find out what a job would make.
enum class Openings : bool {
    ifNeeded, ///< those whose names depend on the picture
    all,      ///< all of them, to find those that have no result
};

/// What a recipe of a job would make.
struct WantedResult {
    NSString path;                  ///< when its name is free; "" where there is no folder or no result
    bool fitsAlready = false;       ///< there is no result, since the file to be replaced is as it should be
    std::optional<Failure> failure; ///< why there is no result, as far as the headers of an opened file tell
};

/// One per recipe, in their order.
std::vector<WantedResult> wantedResults(const ResizeJob& job, Openings openings = Openings::ifNeeded);

/// The path itself when its name is free, else the first free one of stem_1.ext, stem_2.ext, ... A dangling
/// link counts as an existing file.
NSString uniqueFileName(const NSString& path);
/// The same where `isTaken` decides which names are free.
NSString uniqueFileName(const NSString& path, const std::function<bool(const std::string&)>& isTaken);

} // namespace kestrine
