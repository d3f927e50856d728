#include "models/ResizeJob.h"

#include "_MyClasses/Category/FileManagerUtility.h"
#include "_MyClasses/Category/ImageUtility.h"
#include "_MyClasses/Class/ExifTag/ExifOrientation.h"
#include "models/FittingFile.h"
#include "models/ResultNaming.h"
#include "platform/appkit/NSWorkspace.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/host/FailureCollector.h"
#include "platform/host/files/AtomicFile.h"
#include "platform/host/files/FileStatus.h"
#include "platform/host/files/PathParts.h"
#include "platform/host/process/StopSignals.h"

#include <algorithm>

namespace kestrine {

namespace {

/// The reason for a nil result: the last failure is the one that ended the work. `hasFormat`: whether the
/// recipe names a format that exists.
Failure reasonIn(const FailureCollector& collector, bool hasFormat) {
    if (!collector.failures().empty())
        return collector.failures().back();
    if (hasFormat)
        return {Reason::empty,
                "the picture is too narrow: a side of the result would have less than one pixel"};
    return {Reason::empty, "the set gives no output for it"};
}

/// Creates the missing folders of a path. Returns the first failure, because later ones follow from it.
std::optional<Failure> makeFolders(const NSString& path) {
    const FailureCollector collector;
    myUtility::makeFoldersToPath(NSFileManager::defaultManager(), path);
    return collector.failures().empty() ? std::nullopt : std::optional(collector.failures().front());
}

Result<TrashedItem> moveToTrash(const NSString& path) {
    NSWorkspace& workspace = NSWorkspace::shared();
    const std::lock_guard lock(workspace.lock());
    return workspace.recycle(path.deletingLastPathComponent(), path.lastPathComponent());
}

/// Returns the path of the published result.
Result<std::string> publish(const NewContent& content, StagedFile* staged, const CandidatePaths& candidates,
                            Durability durability, const std::optional<FileRights>& rights) {
    return staged != nullptr ? staged->publish(candidates)
                             : publishNewFile(candidates, content, durability, rights);
}

/// The bytes of a result: in memory, or in a file that only needs a name.
struct MadeResult {
    std::shared_ptr<const NSData> data; ///< nil for a file
    std::optional<NewContent> content;  ///< nullopt if there is no result
    ContentDigest digest;               ///< of the content, if the job has a recorder

    static MadeResult of(std::shared_ptr<const NSData> data) {
        return {data, data == nullptr ? std::nullopt : std::optional<NewContent>(data->bytes()), {}};
    }
    static Result<MadeResult> of(NamelessFile file) {
        return MadeResult{nullptr, TRY(NewContent::of(std::move(file))), {}};
    }
};

/// One run of a job.
class JobRun {
public:
    explicit JobRun(const ResizeJob& job) : job_(job) {}

    /// `position` is that of the recipe in the job.
    JobOutcome apply(std::size_t position) {
        const ConversionRecipe& recipe = job_.recipes[position];
        JobOutcome outcome;
        PlannedResult plan{.format = namedFormat(recipe.format)};
        const OptionalString folder = folderOfResult(position);
        if (job_.replacesFile())
            noteRights();
        const MadeResult made = convert(recipe, folder, plan, outcome);
        if (outcome.isRepeated)
            return outcome;
        outcome.bytes = made.content ? made.content->size() : 0;
        if (recipe.place.isReturned) {
            outcome.data = made.data;
            return outcome;
        }
        const bool isWithheld = job_.policy.onlyWithResult && outcome.failure.has_value();
        if (!job_.fixedPaths.empty()) {
            if (!isWithheld)
                writeTo(job_.fixedPaths[position], made, recipe.times, outcome);
            return outcome;
        }
        if (!folder && !outcome.failure)
            outcome.failure = Failure{Reason::notFound, "there is no folder for the result"};
        if (isWithheld || !folder)
            return outcome;
        outcome.path = folder->appendingPathComponent(nameOfResult(job_, recipe, plan, file_));
        const std::optional<FileTime> time = timeOfResult(recipe.times, file_);
        if (job_.replacesFile() && outcome.fitsAlready)
            return outcome;
        if (job_.replacesFile())
            replace(made, outcome);
        else
            write(made, nullptr, Durability::cached, intendedResult(made, outcome.path), outcome);
        if (outcome.isWritten && time)
            (void)setModificationTime(outcome.path.utf8(), *time); // not every file system stores it
        return outcome;
    }

    /// Where the result of a recipe goes if the name is free; "" if it goes nowhere.
    NSString wantedPath(const ConversionRecipe& recipe) {
        const OptionalString folder = outputFolder(recipe);
        PlannedResult plan{.format = namedFormat(recipe.format)};
        if (namesDependOnPicture(recipe)) {
            const FailureCollector ignored; // converting it will report the reason
            plan = plannedResult(recipe, file_, imageFor(recipe));
            if (plan.image == nullptr || isRepeated(recipe, plan))
                return u"";
        }
        return folder ? folder->appendingPathComponent(nameOfResult(job_, recipe, plan, file_)) : NSString();
    }

private:
    static bool namesDependOnPicture(const ConversionRecipe& recipe) {
        return recipe.format.choice == FormatRule::Choice::ofSource
               || (recipe.place.name && recipe.place.name->dependsOnPicture());
    }

    /// Of the original, which may have changed.
    void noteRights() {
        if (const Result<FileRights> rights = rightsOfFile(job_.path.utf8()))
            rights_ = *rights;
    }

    /// Without content if there is no result; the outcome then has the reason.
    MadeResult convert(const ConversionRecipe& recipe, const OptionalString& folder, PlannedResult& plan,
                       JobOutcome& outcome) {
        if (hostility_) {
            outcome.failure = hostility_;
            return {};
        }
        const FailureCollector collector;
        const std::shared_ptr<NSImage> image = imageFor(recipe);
        noteHostility(collector);
        if (image != nullptr && !mayApply(outcome))
            return {};
        const bool mayLoad = image != nullptr || job_.content == nullptr; // a path is tried again
        if (!hostility_ && mayLoad)
            plan = plannedResult(recipe, file_, image);
        outcome.format = plan.format;
        outcome.width = plan.width;
        outcome.height = plan.height;
        outcome.isLeftLying = plan.isLeftLying;
        outcome.isRepeated = isRepeated(recipe, plan);
        if (outcome.isRepeated)
            return {};
        if (auto own = hostility_ ? nullptr : bytesIfFitting(recipe, plan, image.get())) {
            outcome.fitsAlready = true;
            const auto pixels = image->bestRepresentation();
            outcome.width = plan.width = static_cast<std::uint32_t>(pixels->pixelsWide());
            outcome.height = plan.height = static_cast<std::uint32_t>(pixels->pixelsHigh());
            return digested(MadeResult::of(std::move(own)));
        }
        MadeResult made = hostility_ ? MadeResult() : digested(encode(plan, recipe, folder));
        noteHostility(collector);
        if (image != nullptr)
            outcome.damage = image->damage();
        if (made.content && outcome.damage && job_.policy.refusesDamaged) {
            outcome.failure = outcome.damage;
            outcome.refusal = Refusal::damaged;
            return {};
        }
        if (!made.content)
            outcome.failure = reasonIn(collector, image != nullptr && plan.format != nullptr);
        return made;
    }

    /// The process that encodes writes the result into a file on the file system where it will have its name,
    /// or gives it back if there are no nameless files.
    MadeResult encode(const PlannedResult& plan, const ConversionRecipe& recipe,
                      const OptionalString& folder) const {
        constexpr mode_t ofAnyFile = 0666, untilItHasItsRights = 0600;
        if (plan.image == nullptr || !folder || folder->isEmpty())
            return MadeResult::of(encodedResult(plan, recipe, file_));
        Result<NamelessFile> file = NamelessFile::createFor(folderOfName(*folder, recipe, plan).utf8(),
                                                            rights_ ? untilItHasItsRights : ofAnyFile);
        if (!file)
            return MadeResult::of(encodedResult(plan, recipe, file_));
        if (!writeResult(file->descriptor(), plan, recipe, file_))
            return {};
        return valueOrNothing(MadeResult::of(*std::move(file)));
    }

    /// The folder in which the result gets its name: a template may name folders, too.
    NSString folderOfName(const NSString& folder, const ConversionRecipe& recipe,
                          const PlannedResult& plan) const {
        if (!recipe.place.name || !job_.fixedPaths.empty())
            return folder;
        return folder.appendingPathComponent(nameOfResult(job_, recipe, plan, file_))
            .deletingLastPathComponent();
    }

    /// Notes a failure.
    static MadeResult valueOrNothing(Result<MadeResult> made) {
        if (made)
            return *std::move(made);
        noteFailure(made.failure());
        return {};
    }

    /// With the digest, if one is needed.
    MadeResult digested(MadeResult made) const {
        if (job_.recorder == nullptr || !made.content)
            return made;
        const Result<ContentDigest> digest = made.content->digest();
        if (!digest)
            return valueOrNothing(digest.failure());
        made.digest = *digest;
        return made;
    }

    /// Whether several sizes of one recipe became equal because pictures are not enlarged.
    bool isRepeated(const ConversionRecipe& recipe, const PlannedResult& plan) {
        ConversionRecipe sizeless = recipe;
        sizeless.size = Unscaled{};
        if (recipe.enlarges || plan.image == nullptr || !std::holds_alternative<PixelSize>(recipe.size))
            return false;
        const Made made{std::move(sizeless), plan.width, plan.height};
        if (std::ranges::find(made_, made) != made_.end())
            return true;
        made_.push_back(made);
        return false;
    }

    /// The bytes of the file if the recipe asks to use them and they are as the result should be; else nil.
    std::shared_ptr<const NSData> bytesIfFitting(const ConversionRecipe& recipe, const PlannedResult& plan,
                                                 const NSImage* image) const {
        if (!recipe.copiesFitting || image == nullptr)
            return nullptr;
        const auto reader = job_.content != nullptr ? Result(job_.content) : readerOfPath(job_.path.utf8());
        if (!reader || !fitsAlready(recipe, plan, file_, *image, (*reader)->size()))
            return nullptr;
        Result<Bytes> bytes = (*reader)->readAll((*reader)->size());
        return bytes ? std::make_shared<const NSData>(*std::move(bytes)) : nullptr;
    }

    /// Whether the job may replace the file, if it does. Otherwise the outcome has the reason.
    bool mayApply(JobOutcome& outcome) const {
        if (!job_.policy.replacesOnlyPictures)
            return true;
        if (const Result<FileContents> contents = contentsOf(file_.opened))
            outcome.contents = *contents;
        else
            outcome.failure = contents.failure();
        if (job_.replacesFile() && !outcome.failure && outcome.contents.kind != FileContents::Kind::picture) {
            outcome.failure = Failure{Reason::unsupported, "the file holds more than one picture"};
            outcome.refusal = Refusal::holdsMore;
        }
        return !outcome.failure;
    }

    /// A file that broke the decoder, or took all it may take, is not tried again.
    void noteHostility(const FailureCollector& collector) {
        for (const Failure& failure : collector.failures())
            if (failure.reason == Reason::crashed || failure.reason == Reason::timeLimit)
                hostility_ = failure;
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

    /// Moves the original to the trash first, so that the result can get its name.
    void replace(const MadeResult& made, JobOutcome& outcome) {
        std::optional<StagedFile> staged;
        noteRights(); // converting may have taken long
        IntendedResult intended = intendedResult(made, outcome.path);
        if (job_.policy.onlyWithResult) {
            const std::string folder = outcome.path.deletingLastPathComponent().utf8(),
                              hidden = temporaryName();
            intended.path = nameBesideOriginal(outcome.path).utf8();
            intended.hiddenPath = joinedPath(folder, hidden);
            Result<StagedFile> written = stage(intended, folder, hidden, *made.content);
            if (!written) {
                outcome.failure = written.failure();
                return;
            }
            staged.emplace(*std::move(written));
        }
        const StopSignalsBlocked untilPublished;
        if (const Result<TrashedItem> trashed = moveToTrash(job_.path))
            outcome.trashedPath = trashed->path;
        else
            outcome.trashFailure = trashed.failure();
        write(made, staged ? &*staged : nullptr, Durability::synced, std::move(intended), outcome);
    }

    Result<StagedFile> stage(const IntendedResult& intended, const std::string& folder,
                             const std::string& hiddenName, const NewContent& content) const {
        TRY(checkNameIsPossible(intended.path));
        if (job_.recorder != nullptr)
            TRY(job_.recorder->record(intended));
        return StagedFile::write(folder, content, hiddenName, rights_);
    }

    /// Without a path, which is not decided yet.
    IntendedResult intendedResult(const MadeResult& made, const NSString& wanted) const {
        return {.source = job_.path.utf8(),
                .replacesSource = job_.replacesFile(),
                .wanted = wanted.utf8(),
                .content = made.digest};
    }

    /// The name that a result gets when the original's name is free.
    NSString nameBesideOriginal(const NSString& wanted) const {
        return wanted == job_.path ? wanted : uniqueFileName(wanted);
    }

    /// The result of an earlier run that may be replaced by one that wants this name.
    const EarlierResult* earlierResult(const std::string& wanted) const {
        const auto found = std::ranges::find(job_.earlier, wanted, &EarlierResult::wanted);
        if (found == job_.earlier.end())
            return nullptr;
        const Result<ContentDigest> content = digestOfFile(found->path);
        return content && *content == found->content ? &*found : nullptr;
    }

    /// Records that the result is about to get this name, unless that is recorded already.
    Result<void> recordName(IntendedResult& intended, const std::string& path) const {
        if (job_.recorder == nullptr || intended.path == path)
            return {};
        intended.path = path;
        return job_.recorder->record(intended);
    }

    /// Publishes a result under the first free name. Returns its path.
    Result<std::string> publishUnderFreeName(const NewContent& content, StagedFile* staged,
                                             Durability durability, IntendedResult& intended) const {
        const NSString wanted = NSString::fromUTF8(intended.wanted);
        std::optional<Failure> unrecorded;
        const auto candidates = [&](unsigned) {
            const std::string path = uniqueFileName(wanted).utf8();
            if (const Result<void> recorded = recordName(intended, path); !recorded)
                unrecorded = recorded.failure();
            return unrecorded ? "" : path; // no file can have an empty path
        };
        const Result<std::string> published = publish(content, staged, candidates, durability, rights_);
        return unrecorded ? Result<std::string>(*unrecorded) : published;
    }

    /// Replaces the result of an earlier run. Returns its path.
    Result<std::string> publishInPlaceOf(const EarlierResult& earlier, const NewContent& content,
                                         IntendedResult& intended) const {
        TRY(recordName(intended, earlier.path));
        TRY(replaceFile(earlier.path, content, Durability::cached));
        return earlier.path;
    }

    /// Writes to the first free name. Sets the outcome's path, even if nothing is written.
    void write(const MadeResult& made, StagedFile* staged, Durability durability, IntendedResult intended,
               JobOutcome& outcome) const {
        const std::optional<Failure> folderFailure = makeFolders(outcome.path.deletingLastPathComponent());
        const EarlierResult* earlier = made.content ? earlierResult(intended.wanted) : nullptr;
        outcome.path = earlier == nullptr ? uniqueFileName(outcome.path) : NSString::fromUTF8(earlier->path);
        if (!made.content)
            return;
        const Result<std::string> written =
            earlier == nullptr ? publishUnderFreeName(*made.content, staged, durability, intended)
                               : publishInPlaceOf(*earlier, *made.content, intended);
        outcome.isWritten = written.ok();
        if (written && earlier == nullptr && *written != intended.wanted)
            outcome.takenPath = intended.wanted;
        if (written)
            outcome.path = NSString::fromUTF8(*written);
        else
            outcome.failure = folderFailure.value_or(written.failure());
    }

    /// Whether the file at `path` has this content already.
    static bool isThere(const std::string& path, const NewContent& content) {
        const Result<ContentDigest> there = digestOfFile(path), own = content.digest();
        return there && own && *there == *own;
    }

    /// Publishes a result at a fixed path. Returns whether it was there already.
    Result<bool> publishAt(const std::string& path, const NewContent& content,
                           IntendedResult& intended) const {
        const std::optional<Failure> folderFailure =
            makeFolders(NSString::fromUTF8(path).deletingLastPathComponent());
        TRY(recordName(intended, path));
        const Result<std::string> published =
            publishNewFile([&](unsigned) { return path; }, content, Durability::cached);
        if (published)
            return false;
        if (published.failure().reason != Reason::alreadyExists)
            return folderFailure.value_or(published.failure());
        if (isThere(path, content))
            return true;
        return Failure{Reason::alreadyExists, path + " is there already with other content, and stays"};
    }

    void writeTo(const NSString& path, const MadeResult& made, TimesRule times, JobOutcome& outcome) const {
        outcome.path = path;
        if (path.isEmpty())
            outcome.failure = Failure{Reason::notFound, "there is no name for the result"};
        if (!made.content || path.isEmpty())
            return;
        const std::optional<FileTime> time = timeOfResult(times, file_);
        IntendedResult intended = intendedResult(made, path);
        const Result<bool> published = publishAt(path.utf8(), *made.content, intended);
        outcome.isWritten = published.ok();
        outcome.wasThere = published.ok() && *published;
        if (!published)
            outcome.failure = published.failure();
        else if (time)
            (void)setModificationTime(path.utf8(), *time); // not every file system stores it
    }

    /// A slot whose load failed stays empty and is tried again for the next recipe that needs it.
    std::shared_ptr<NSImage> imageFor(const ConversionRecipe& recipe) {
        const bool converts = recipe.convertsResolution;
        std::shared_ptr<NSImage>& slot = converts ? converted_ : plain_;
        if (slot != nullptr || !open())
            return slot;
        slot = NSImage::initWithSource(file_.opened);
        if (converts)
            myUtility::convertResolution(*slot);
        if (job_.recipes.size() > 1)
            slot->keepPixels();
        return slot;
    }

    /// Both slots, the orientation and the properties come from one opening of the file.
    bool open() {
        if (file_.opened != nullptr)
            return true;
        const bool turns = std::ranges::find(job_.recipes, UprightRule::narrow, &ConversionRecipe::upright)
                           != job_.recipes.end();
        const FileQuestion question = turns ? orientationQuestionFor(job_.path) : nullptr;
        Result<std::shared_ptr<Source>> source = job_.content != nullptr
                                                     ? PictureEngine::current().open(job_.content, question)
                                                     : openPicture(job_.path.utf8(), question);
        if (!source) {
            noteFailure(source.failure());
            return false;
        }
        file_.opened = *std::move(source);
        return true;
    }

    struct Made {
        ConversionRecipe recipe; ///< without its size
        std::uint32_t width, height;

        bool operator==(const Made&) const = default;
    };

    const ResizeJob& job_;
    std::vector<Made> made_; ///< of recipes that do not enlarge
    PictureFile file_{job_.path};
    std::optional<FileRights> rights_; ///< of the original, for a result that replaces it
    std::optional<Failure> hostility_; ///< why the file must not be tried again
    std::shared_ptr<NSImage> plain_;
    std::shared_ptr<NSImage> converted_;
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
