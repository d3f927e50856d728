#include "models/JobPublication.h"

#include "_MyClasses/Category/FileManagerUtility.h"
#include "platform/appkit/NSWorkspace.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/host/FailureCollector.h"
#include "platform/host/files/FileStatus.h"
#include "platform/host/files/PathParts.h"
#include "platform/host/process/StopSignals.h"

#include <algorithm>

namespace kestrine {

namespace {

/// Creates the missing folders of a path. Returns the first failure, because later ones follow from it.
std::optional<Failure> makeFolders(const NSString& path) {
    const FailureCollector collector;
    myUtility::makeFoldersToPath(NSFileManager::defaultManager(), path);
    return collector.failures().empty() ? std::nullopt : std::optional(collector.failures().front());
}

} // namespace

/// The intended result without its path, which is not decided yet.
IntendedResult JobPublication::intention() const {
    return {.source = job_.path.utf8(),
            .replacesSource = job_.replacesFile(),
            .wanted = outcome_.path.utf8(),
            .content = made_.digest};
}

void JobPublication::write() { write(Durability::cached, std::nullopt); }

void JobPublication::replaceOriginal(const std::optional<FileRights>& rights,
                                     const std::optional<FileMark>& mark) {
    if (job_.policy.onlyWithResult && !stage(rights))
        return;
    const StopSignalsBlocked untilPublished;
    if (!job_.policy.onlyWithResult || isUnchanged(mark)) {
        moveOriginalToTrash();
        write(Durability::synced, rights);
    }
    noteEnd();
}

/// Whether the original is still the file that was converted. Otherwise the outcome has the reason.
bool JobPublication::isUnchanged(const std::optional<FileMark>& mark) {
    const Result<FileMark> now = markOfItem(job_.path.utf8());
    if (mark && now && *mark == *now)
        return true;
    outcome_.failure =
        Failure{Reason::refused, "it was changed during the conversion, so it was not replaced"};
    outcome_.refusal = Refusal::changed;
    staged_.reset();
    return false;
}

/// Whether the result is now on the disk beside the original. Otherwise the outcome has the reason.
bool JobPublication::stage(const std::optional<FileRights>& rights) {
    const std::string folder = outcome_.path.deletingLastPathComponent().utf8(), hidden = temporaryName();
    intended_.path = nameBesideOriginal().utf8();
    intended_.hiddenPath = joinedPath(folder, hidden);
    Result<StagedFile> written = staged(folder, hidden, rights);
    if (!written) {
        outcome_.failure = written.failure();
        noteEnd();
        return false;
    }
    staged_.emplace(*std::move(written));
    return true;
}

Result<StagedFile> JobPublication::staged(const std::string& folder, const std::string& hiddenName,
                                          const std::optional<FileRights>& rights) {
    TRY(checkNameIsPossible(intended_.path));
    TRY(record());
    return StagedFile::write(folder, *made_.content, hiddenName, rights);
}

void JobPublication::moveOriginalToTrash() {
    NSWorkspace& workspace = NSWorkspace::shared();
    const std::lock_guard lock(workspace.lock());
    const Result<TrashedItem> trashed =
        workspace.recycle(job_.path.deletingLastPathComponent(), job_.path.lastPathComponent());
    if (trashed)
        outcome_.trashedPath = trashed->path;
    else
        outcome_.trashFailure = trashed.failure();
}

/// The name that a result gets when the original's name is free.
NSString JobPublication::nameBesideOriginal() const {
    return outcome_.path == job_.path ? outcome_.path : uniqueFileName(outcome_.path);
}

/// The result of an earlier run that this one may replace.
std::optional<EarlierResult> JobPublication::takeEarlierResult() {
    const auto found = std::ranges::find(earlier_, intended_.wanted, &EarlierResult::wanted);
    if (found == earlier_.end())
        return job_.recorder == nullptr ? std::nullopt : job_.recorder->takeAbandonedResult(intended_.wanted);
    const EarlierResult earlier = *found;
    earlier_.erase(found); // another result of this job may want the same name
    const Result<ContentDigest> content = digestOfFile(earlier.path);
    return content && *content == earlier.content ? std::optional(earlier) : std::nullopt;
}

Result<void> JobPublication::record() {
    if (job_.recorder == nullptr)
        return {};
    TRY(job_.recorder->record(intended_));
    intended_.isCorrection = true; // if there is another call
    return {};
}

/// Records that the result is about to get this name, unless that is recorded already.
Result<void> JobPublication::recordName(const std::string& path) {
    if (intended_.path == path)
        return {};
    intended_.path = path;
    return record();
}

void JobPublication::noteEnd() const {
    const bool isRecorded = intended_.isCorrection;
    if (isRecorded)
        job_.recorder->ended(intended_, !outcome_.trashedPath.empty());
}

/// Returns the path of the result.
Result<std::string> JobPublication::publishUnderFreeName(Durability durability,
                                                         const std::optional<FileRights>& rights) {
    const NSString wanted = NSString::fromUTF8(intended_.wanted);
    std::optional<Failure> unrecorded;
    const auto candidates = [&](unsigned) {
        const std::string path = uniqueFileName(wanted).utf8();
        if (const Result<void> recorded = recordName(path); !recorded)
            unrecorded = recorded.failure();
        return unrecorded ? "" : path; // no file can have an empty path
    };
    const Result<std::string> published =
        staged_ ? staged_->publish(candidates)
                : publishNewFile(candidates, *made_.content, durability, rights);
    return unrecorded ? Result<std::string>(*unrecorded) : published;
}

/// Returns the path of the result.
Result<std::string> JobPublication::publishInPlaceOf(const EarlierResult& earlier) {
    TRY(recordName(earlier.path));
    TRY(replaceFile(earlier.path, *made_.content, Durability::cached));
    return earlier.path;
}

void JobPublication::write(Durability durability, const std::optional<FileRights>& rights) {
    const std::optional<Failure> folderFailure = makeFolders(outcome_.path.deletingLastPathComponent());
    const std::optional<EarlierResult> earlier = made_.content ? takeEarlierResult() : std::nullopt;
    outcome_.path = earlier ? NSString::fromUTF8(earlier->path) : uniqueFileName(outcome_.path);
    if (!made_.content)
        return;
    const Result<std::string> written =
        earlier ? publishInPlaceOf(*earlier) : publishUnderFreeName(durability, rights);
    outcome_.isWritten = written.ok();
    if (written && !earlier && *written != intended_.wanted)
        outcome_.takenPath = intended_.wanted;
    if (written)
        outcome_.path = NSString::fromUTF8(*written);
    else
        outcome_.failure = folderFailure.value_or(written.failure());
}

void JobPublication::writeAtFixedPath() {
    if (outcome_.path.isEmpty())
        outcome_.failure = Failure{Reason::notFound, "there is no name for the result"};
    if (!made_.content || outcome_.path.isEmpty())
        return;
    const Result<bool> wasThere = publishAtFixedPath();
    outcome_.isWritten = wasThere.ok();
    outcome_.wasThere = wasThere.ok() && *wasThere;
    if (!wasThere)
        outcome_.failure = wasThere.failure();
}

/// Returns whether the result was there already.
Result<bool> JobPublication::publishAtFixedPath() {
    const std::string path = intended_.wanted;
    const std::optional<Failure> folderFailure = makeFolders(outcome_.path.deletingLastPathComponent());
    TRY(recordName(path));
    const Result<std::string> published =
        publishNewFile([&](unsigned) { return path; }, *made_.content, Durability::cached);
    if (published)
        return false;
    if (published.failure().reason != Reason::alreadyExists)
        return folderFailure.value_or(published.failure());
    if (isThere(path))
        return true;
    return Failure{Reason::alreadyExists, path + " already exists with other content and is not replaced"};
}

/// Whether the file at `path` has the content of the result already.
bool JobPublication::isThere(const std::string& path) const {
    const Result<ContentDigest> there = digestOfFile(path), own = made_.content->digest();
    return there && own && *there == *own;
}

} // namespace kestrine
