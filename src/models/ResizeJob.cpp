#include "models/ResizeJob.h"

#include "models/JobConversion.h"
#include "models/JobPublication.h"
#include "models/ResultNaming.h"
#include "platform/host/files/FileStatus.h"

namespace kestrine {

namespace {

/// Whether the name or the existence of a result depends on the picture. Several sizes may give equal results
/// if they do not enlarge or may copy the file.
bool dependsOnPicture(const ConversionRecipe& recipe, const ResizeJob& job) {
    const bool mayBeRepeated = job.recipes.size() > 1 && (!recipe.enlarges || recipe.copiesFitting);
    return mayBeRepeated || recipe.format.choice == FormatRule::Choice::ofSource
           || (job.replacesFile() && recipe.copiesFitting)
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
        const std::optional<FileMark> mark = markOfOriginal();
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
            publish(made, recipe.times, rights, mark, outcome);
        return outcome;
    }

    WantedResult wanted(const ConversionRecipe& recipe, Openings openings) {
        const OptionalString folder = outputFolder(recipe);
        PlannedResult plan{.format = namedFormat(recipe.format)};
        if (openings == Openings::all || dependsOnPicture(recipe, job_)) {
            Result<std::optional<PlannedResult>> found = conversion_.planned(recipe);
            if (!found)
                return {.path = {}, .failure = found.failure()};
            if (!*found)
                return {};
            plan = **std::move(found);
        }
        if (job_.replacesFile() && plan.fitsAlready)
            return {.path = u"", .fitsAlready = true};
        if (!folder)
            return {};
        return {.path = folder->appendingPathComponent(nameOfResult(job_, recipe, plan, conversion_.file()))};
    }

private:
    /// `rights` and `mark` are those of the original before the conversion, during which it may have changed.
    void publish(const MadeResult& made, TimesRule times, const std::optional<FileRights>& rights,
                 const std::optional<FileMark>& mark, JobOutcome& outcome) {
        const std::optional<FileTime> time = timeOfResult(times, conversion_.file());
        const std::optional<FileRights> newest = rightsOfOriginal();
        JobPublication publication(job_, earlier_, made, outcome);
        if (!job_.fixedPaths.empty())
            publication.writeAtFixedPath();
        else if (job_.replacesFile())
            publication.replaceOriginal(newest ? newest : rights, mark);
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

    /// nullopt if the original is not replaced, or without regard to changes, or if the mark cannot be read.
    std::optional<FileMark> markOfOriginal() const {
        const bool isWatched = job_.replacesFile() && job_.policy.onlyWithResult;
        const Result<FileMark> mark = isWatched ? markOfItem(job_.path.utf8()) : Failure{Reason::empty, ""};
        return mark ? std::optional(*mark) : std::nullopt;
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

std::vector<WantedResult> wantedResults(const ResizeJob& job, Openings openings) {
    JobRun run(job);
    std::vector<WantedResult> wanted;
    for (const ConversionRecipe& recipe : job.recipes)
        wanted.push_back(run.wanted(recipe, openings));
    return wanted;
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
