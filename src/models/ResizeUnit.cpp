#include "models/ResizeUnit.h"

#include "_MyClasses/Category/FileManagerUtility.h"
#include "_MyClasses/Category/ImageUtility.h"
#include "platform/appkit/NSWorkspace.h"
#include "platform/foundation/NSCollections.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/NSNotificationCenter.h"
#include "platform/host/FailureCollector.h"
#include "platform/host/files/AtomicFile.h"
#include "platform/host/files/FileStatus.h"

#include <algorithm>

namespace kestrine {

namespace {

NSException unfitValue(const NSString& key) {
    return {NSInvalidArgumentException, "the value does not fit " + key.utf8()};
}

/// nil clears the field.
OptionalString folderPathFrom(const Object& value) {
    OptionalString path = NSString::fromObject(value);
    if (value != nullptr && !path)
        throw unfitValue(u"saveFolderPath");
    return path;
}

ResizeSets setsFrom(const Object& value) {
    const auto array = std::dynamic_pointer_cast<const NSArray>(value);
    if (array == nullptr)
        throw unfitValue(u"resizeSets");
    ResizeSets sets;
    for (const Object& element : array->elements())
        sets.push_back(std::dynamic_pointer_cast<const ResizeSet>(element));
    if (std::ranges::find(sets, nullptr) != sets.end())
        throw unfitValue(u"resizeSets");
    return sets;
}

/// Whatever becomes of it, the job goes on; the original then stays where it is.
void moveToTrash(const NSString& path) {
    NSWorkspace& workspace = NSWorkspace::shared();
    const std::lock_guard lock(workspace.lock());
    workspace.performFileOperation(NSWorkspaceRecycleOperation, path.deletingLastPathComponent(), u"",
                                   {path.lastPathComponent()});
}

/// Writes to the first free name; `path` becomes the one it got, or would have got.
bool writeUniquely(const NSData* data, NSString& path, Durability durability) {
    const NSString wanted = path;
    path = ResizeUnit::uniqueFileName(wanted);
    if (data == nullptr)
        return false;
    const auto candidates = [&](unsigned attempt) {
        return (attempt == 0 ? path : ResizeUnit::uniqueFileName(wanted)).utf8();
    };
    const Result<std::string> written = publishNewFile(candidates, data->bytes(), durability);
    if (!written) {
        noteFailure(written.failure());
        return false;
    }
    path = NSString::fromUTF8(*written);
    return true;
}

} // namespace

void ResizeUnit::setValueForKey(const Object& value, const NSString& key) {
    if (key == u"filepath")
        filepath_ = value;
    else if (key == u"saveFolderPath")
        saveFolderPath_ = folderPathFrom(value);
    else if (key == u"resizeSets")
        resizeSets_ = setsFrom(value);
    else
        throw NSException("NSUnknownKeyException", "ResizeUnit has no field " + key.utf8());
}

ResizeUnit::File ResizeUnit::file() const {
    if (const OptionalString path = NSString::fromObject(filepath_))
        return {*path, std::nullopt};
    const auto dictionary = std::dynamic_pointer_cast<const NSDictionary>(filepath_);
    if (dictionary == nullptr)
        return {};
    return {NSString::fromObject(dictionary->objectForKey(u"path")).value_or(u""),
            NSString::fromObject(dictionary->objectForKey(u"rootPath"))};
}

void ResizeUnit::resize(const Object&) {
    ImageSlots slots;
    outcomes_.clear();
    std::vector<Object> resultPaths;
    for (std::size_t i = 0; i < resizeSets_.size(); ++i) {
        const FailureCollector collector;
        outcomes_.push_back(applySet(*resizeSets_[i], file(), slots));
        outcomes_.back().failures = collector.failures();
        resultPaths.push_back(outcomes_.back().path.object());
    }
    slots = {};
    const auto info = std::make_shared<NSDictionary>(
        std::map<NSString, Object>{{resultPathsKey, std::make_shared<NSArray>(std::move(resultPaths))}});
    NSNotificationCenter::defaultCenter().postNotification(RUResizeHasDone, weak_from_this().lock(), info);
}

ResizeUnit::Outcome ResizeUnit::applySet(const ResizeSet& set, const File& file, ImageSlots& slots) const {
    const NSString name = set.fileNameForPath(file.path);
    const auto data = set.resizedImageDataWithFile(file.path, imageForSet(set, file.path, slots));
    OptionalString folder;
    if (replacesFile(set)) {
        moveToTrash(file.path);
        folder = file.path.deletingLastPathComponent();
    } else {
        folder = set.resizeFolderForPath(saveFolderPath_, file.rootPath);
    }
    if (!folder)
        return {};
    Outcome outcome{folder->appendingPathComponent(name), false, {}};
    myUtility::makeFoldersToPath(NSFileManager::defaultManager(), outcome.path.deletingLastPathComponent());
    outcome.isWritten =
        writeUniquely(data.get(), outcome.path, replacesFile(set) ? Durability::synced : Durability::cached);
    return outcome;
}

std::shared_ptr<NSImage> ResizeUnit::imageForSet(const ResizeSet& set, const NSString& path,
                                                 ImageSlots& slots) const {
    const bool converts = set.convertResolution() != 0;
    std::shared_ptr<NSImage>& slot = converts ? slots.converted : slots.plain;
    if (slot != nullptr)
        return slot;
    slot = NSImage::initWithContentsOfFile(path);
    if (slot == nullptr)
        return nullptr;
    if (converts)
        myUtility::convertResolution(*slot);
    if (resizeSets_.size() > 1)
        slot->keepPixels();
    return slot;
}

NSString ResizeUnit::uniqueFileName(const NSString& path) {
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
