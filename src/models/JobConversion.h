// JobConversion: makes the results of a job, one after another, from one opening of its file. Nothing here
// changes files.
#pragma once

#include "models/MadeResult.h"
#include "models/RecipeConversion.h"
#include "models/ResizeJob.h"
#include "platform/host/FailureCollector.h"

#include <vector>

namespace kestrine {

class JobConversion {
public:
    /// `job` must outlive this object.
    explicit JobConversion(const ResizeJob& job) : job_(job), file_(job.path) {}

    /// The file of the job, open as soon as a recipe needed the picture.
    const PictureFile& file() const { return file_; }

    /// What the recipe makes of the picture; nullopt if that is what an earlier recipe gave. Fails if it
    /// makes nothing of it, as far as the headers tell.
    Result<std::optional<PlannedResult>> planned(const ConversionRecipe& recipe);

    /// Makes the result of a recipe, and sets everything in the outcome that does not depend on its name. The
    /// result has no content if there is no result; the outcome then has the reason. `folder` is where a
    /// result will get its name, nil if it gets none; with `isPrivate` only this user can read it until then.
    /// `plan` has the format that the recipe names.
    MadeResult convert(const ConversionRecipe& recipe, const OptionalString& folder, bool isPrivate,
                       PlannedResult& plan, JobOutcome& outcome);

private:
    struct Made {
        ConversionRecipe recipe; ///< without its size
        std::uint32_t width, height;

        bool operator==(const Made&) const = default;
    };

    std::shared_ptr<NSImage> imageFor(const ConversionRecipe& recipe);
    bool open();
    bool mayApply(JobOutcome& outcome) const;
    bool isRepeated(const ConversionRecipe& recipe, const PlannedResult& plan);
    Result<std::shared_ptr<const ByteReader>> reader() const;
    void useFileIfItFits(const ConversionRecipe& recipe, PlannedResult& plan, const NSImage* image) const;
    MadeResult ownBytes() const;
    MadeResult encode(const PlannedResult& plan, const ConversionRecipe& recipe, const OptionalString& folder,
                      bool isPrivate) const;
    NSString folderOfName(const NSString& folder, const ConversionRecipe& recipe,
                          const PlannedResult& plan) const;
    MadeResult digested(MadeResult made) const;
    void noteHostility(const FailureCollector& collector);

    const ResizeJob& job_;
    PictureFile file_;
    std::vector<Made> made_;           ///< of recipes that do not enlarge
    std::optional<Failure> hostility_; ///< why the file must not be tried again
    std::shared_ptr<NSImage> plain_;
    std::shared_ptr<NSImage> converted_;
};

} // namespace kestrine
