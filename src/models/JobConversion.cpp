#include "models/JobConversion.h"

#include "_MyClasses/Category/ImageUtility.h"
#include "_MyClasses/Class/ExifTag/ExifOrientation.h"
#include "models/FittingFile.h"
#include "models/ResultNaming.h"

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
                "the picture is too narrow: a side of the result would be shorter than one pixel"};
    return {Reason::empty, "the set gives no output for it"};
}

/// Notes a failure.
MadeResult valueOrNothing(Result<MadeResult> made) {
    if (made)
        return *std::move(made);
    noteFailure(made.failure());
    return {};
}

} // namespace

Result<std::optional<PlannedResult>> JobConversion::planned(const ConversionRecipe& recipe) {
    const FailureCollector collector;
    const std::shared_ptr<NSImage> image = imageFor(recipe);
    PlannedResult plan = plannedResult(recipe, file_, image);
    useFileIfItFits(recipe, plan, image.get());
    if (!plan.fitsAlready && !mayBeEncoded(plan, recipe))
        return reasonIn(collector, image != nullptr && plan.format != nullptr);
    return isRepeated(recipe, plan) ? std::nullopt : std::optional(std::move(plan));
}

MadeResult JobConversion::convert(const ConversionRecipe& recipe, const OptionalString& folder,
                                  bool isPrivate, PlannedResult& plan, JobOutcome& outcome) {
    if (hostility_) {
        outcome.failure = hostility_;
        return {};
    }
    const FailureCollector collector;
    const std::shared_ptr<NSImage> image = imageFor(recipe);
    noteHostility(collector);
    const bool mayLoad = image != nullptr || job_.content == nullptr; // a path is tried again
    if (!hostility_ && mayLoad)
        plan = plannedResult(recipe, file_, image);
    outcome.format = plan.format;
    outcome.width = plan.width;
    outcome.height = plan.height;
    outcome.isNotUpright = plan.isNotUpright;
    if (!hostility_)
        useFileIfItFits(recipe, plan, image.get());
    if (image != nullptr && !plan.fitsAlready && !mayApply(outcome))
        return {};
    outcome.isRepeated = isRepeated(recipe, plan);
    if (outcome.isRepeated)
        return {};
    if (plan.fitsAlready) {
        outcome.fitsAlready = true;
        outcome.width = plan.width;
        outcome.height = plan.height;
        MadeResult made = digested(ownBytes());
        if (!made.content)
            outcome.failure = reasonIn(collector, true);
        return made;
    }
    MadeResult made = hostility_ ? MadeResult() : digested(encode(plan, recipe, folder, isPrivate));
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

/// The process that encodes writes the result into a file on the file system where it will have its name, or
/// gives it back if there are no nameless files.
MadeResult JobConversion::encode(const PlannedResult& plan, const ConversionRecipe& recipe,
                                 const OptionalString& folder, bool isPrivate) const {
    constexpr mode_t ofAnyFile = 0666, forThisUser = 0600;
    if (plan.image == nullptr || !folder || folder->isEmpty())
        return MadeResult::of(encodedResult(plan, recipe, file_));
    Result<NamelessFile> file = NamelessFile::createFor(folderOfName(*folder, recipe, plan).utf8(),
                                                        isPrivate ? forThisUser : ofAnyFile);
    if (!file)
        return MadeResult::of(encodedResult(plan, recipe, file_));
    if (!writeResult(file->descriptor(), plan, recipe, file_))
        return {};
    return valueOrNothing(MadeResult::of(*std::move(file)));
}

/// The folder in which the result gets its name: a template may name folders, too.
NSString JobConversion::folderOfName(const NSString& folder, const ConversionRecipe& recipe,
                                     const PlannedResult& plan) const {
    if (!recipe.place.name || !job_.fixedPaths.empty())
        return folder;
    return folder.appendingPathComponent(nameOfResult(job_, recipe, plan, file_)).deletingLastPathComponent();
}

/// The result with its digest, if one is needed.
MadeResult JobConversion::digested(MadeResult made) const {
    if (job_.recorder == nullptr || !made.content)
        return made;
    const Result<ContentDigest> digest = made.content->digest();
    if (!digest)
        return valueOrNothing(digest.failure());
    made.digest = *digest;
    return made;
}

/// Whether an earlier size gave an equal result, because pictures are not enlarged or because the file itself
/// is the result.
bool JobConversion::isRepeated(const ConversionRecipe& recipe, const PlannedResult& plan) {
    ConversionRecipe sizeless = recipe;
    sizeless.size = Unscaled{};
    const bool mayBeEqual = !recipe.enlarges || plan.fitsAlready;
    if (!mayBeEqual || plan.image == nullptr || !std::holds_alternative<PixelSize>(recipe.size))
        return false;
    const Made made{std::move(sizeless), plan.width, plan.height};
    if (std::ranges::find(made_, made) != made_.end())
        return true;
    made_.push_back(made);
    return false;
}

Result<std::shared_ptr<const ByteReader>> JobConversion::reader() const {
    return job_.content != nullptr ? Result(job_.content) : readerOfPath(job_.path.utf8());
}

/// Makes the file the result if the recipe asks for that and the file is as the result should be.
void JobConversion::useFileIfItFits(const ConversionRecipe& recipe, PlannedResult& plan,
                                    const NSImage* image) const {
    if (!recipe.copiesFitting || image == nullptr)
        return;
    const auto file = reader();
    if (!file || !fitsAlready(recipe, plan, file_, *image, (*file)->size()))
        return;
    plan.fitsAlready = true;
    const auto pixels = image->bestRepresentation();
    plan.width = static_cast<std::uint32_t>(pixels->pixelsWide());
    plan.height = static_cast<std::uint32_t>(pixels->pixelsHigh());
}

/// The file as it is. If it cannot be read, the reason is noted.
MadeResult JobConversion::ownBytes() const {
    const auto file = reader();
    Result<Bytes> bytes = file ? (*file)->readAll((*file)->size()) : file.failure();
    if (bytes)
        return MadeResult::of(std::make_shared<const NSData>(*std::move(bytes)));
    return valueOrNothing(bytes.failure());
}

/// Whether the job may replace the file, if it does. Otherwise the outcome has the reason.
bool JobConversion::mayApply(JobOutcome& outcome) const {
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

/// Notes whether a file crashed the decoder or took too much time; such a file is not tried again.
void JobConversion::noteHostility(const FailureCollector& collector) {
    for (const Failure& failure : collector.failures())
        if (failure.reason == Reason::crashed || failure.reason == Reason::timeLimit)
            hostility_ = failure;
}

/// A slot whose load failed stays empty and is tried again for the next recipe that needs it.
std::shared_ptr<NSImage> JobConversion::imageFor(const ConversionRecipe& recipe) {
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
bool JobConversion::open() {
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

} // namespace kestrine
