#include "models/ResizeJob.h"

#include "models/JobConversion.h"
#include "models/JobPublication.h"
#include "models/ResultNaming.h"
#include "platform/host/files/FileStatus.h"

namespace kestrine {

namespace {

bool namesDependOnPicture(const ConversionRecipe& recipe) {
    return recipe.format.choice == FormatRule::Choice::ofSource
           || (recipe.place.name && recipe.place.name->dependsOnPicture());
}

/// One run of a job.
class JobRun {
public:
    explicit JobRun(const ResizeJob& job) : job_(job), conversion_(job), earlier_(job.earlier) {}

    /// `position` is that of the recipe in the job.
    JobOutcome apply(std::size_t position) {
        const ConversionRecipe& recipe = job_.recipes[position];
        JobOutcome outcome;
        PlannedResult plan{.format = namedFormat(recipe.format)};
        const OptionalString folder = folderOfResult(position);
        const std::optional<FileRights> rights = rightsOfOriginal();
        const MadeResult made = conversion_.convert(recipe, folder, rights.has_value(), plan, outcome);
        if (outcome.isRepeated)
            return outcome;
        outcome.bytes = made.content ? made.content->size() : 0;
        if (recipe.place.isReturned) {
            outcome.data = made.data;
            return outcome;
        }
        if (!folder && !outcome.failure)
            outcome.failure = Failure{Reason::notFound, "there is no folder for the result"};
        const bool isWithheld = job_.policy.onlyWithResult && outcome.failure.has_value();
        if (isWithheld || !folder)
            return outcome;
        outcome.path =
            job_.fixedPaths.empty()
                ? folder->appendingPathComponent(nameOfResult(job_, recipe, plan, conversion_.file()))
                : job_.fixedPaths[position];
        if (!(job_.replacesFile() && outcome.fitsAlready))
            publish(made, recipe.times, rights, outcome);
        return outcome;
    }

    /// Where the result of a recipe goes if the name is free; "" if it goes nowhere.
    NSString wantedPath(const ConversionRecipe& recipe) {
        const OptionalString folder = outputFolder(recipe);
        PlannedResult plan{.format = namedFormat(recipe.format)};
        if (namesDependOnPicture(recipe)) {
            std::optional<PlannedResult> found = conversion_.planned(recipe);
            if (!found)
                return u"";
            plan = *std::move(found);
        }
        return folder ? folder->appendingPathComponent(nameOfResult(job_, recipe, plan, conversion_.file()))
                      : NSString();
    }

private:
    /// `rights` are those of the original before the conversion, during which they may have changed.
    void publish(const MadeResult& made, TimesRule times, const std::optional<FileRights>& rights,
                 JobOutcome& outcome) {
        const std::optional<FileTime> time = timeOfResult(times, conversion_.file());
        const std::optional<FileRights> newest = rightsOfOriginal();
        JobPublication publication(job_, earlier_, made, outcome);
        if (!job_.fixedPaths.empty())
            publication.writeAtFixedPath();
        else if (job_.replacesFile())
            publication.replaceOriginal(newest ? newest : rights);
        else
            publication.write();
        if (outcome.isWritten && time)
            (void)setModificationTime(outcome.path.utf8(), *time); // not every file system stores it
    }

    /// The rights that the result gets; nullopt if it does not replace the original, or if they cannot be
    /// read.
    std::optional<FileRights> rightsOfOriginal() const {
        if (!job_.replacesFile())
            return std::nullopt;
        const Result<FileRights> rights = rightsOfFile(job_.path.utf8());
        return rights ? std::optional(*rights) : std::nullopt;
    }

    /// nil if the result gets no name in a folder.
    OptionalString folderOfResult(std::size_t position) const {
        const ConversionRecipe& recipe = job_.recipes[position];
        if (recipe.place.isReturned)
            return {};
        return job_.fixedPaths.empty() ? outputFolder(recipe)
                                       : job_.fixedPaths[position].deletingLastPathComponent();
    }

    OptionalString outputFolder(const ConversionRecipe& recipe) const {
        return job_.replacesFile() ? job_.path.deletingLastPathComponent()
                                   : folderFor(recipe.place, job_.saveFolderPath, job_.rootPath);
    }

    const ResizeJob& job_;
    JobConversion conversion_;
    std::vector<EarlierResult> earlier_; ///< those that no result has replaced yet
};

} // namespace

std::vector<JobOutcome> runJob(const ResizeJob& job) {
    JobRun run(job);
    std::vector<JobOutcome> outcomes;
    for (std::size_t i = 0; i < job.recipes.size(); ++i)
        outcomes.push_back(run.apply(i));
    return outcomes;
}

std::vector<NSString> wantedPaths(const ResizeJob& job) {
    JobRun run(job);
    std::vector<NSString> paths;
    for (const ConversionRecipe& recipe : job.recipes)
        paths.push_back(run.wantedPath(recipe));
    return paths;
}

NSString uniqueFileName(const NSString& path) { return uniqueFileName(path, isTaken); }

NSString uniqueFileName(const NSString& path, const std::function<bool(const std::string&)>& isTaken) {
    if (!isTaken(path.utf8()))
        return path;
    const NSString stem = path.deletingPathExtension();
    const NSString extension = path.pathExtension();
    for (std::uint64_t n = 1;; ++n) {
        const NSString candidate = stem + u"_" + NSString::fromUTF8(std::to_string(n)) + u"." + extension;
        if (!isTaken(candidate.utf8()))
            return candidate;
    }
}

} // namespace kestrine
