#include "models/ResizeUnit.h"

#include "platform/foundation/NSCollections.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSNotificationCenter.h"

#include <algorithm>

namespace kestrine {

namespace {

NSException unfitValue(const NSString& key) {
    return {NSInvalidArgumentException, "the value does not fit " + key.utf8()};
}

void setFile(ResizeJob& job, const Object& value) {
    const auto dictionary = std::dynamic_pointer_cast<const NSDictionary>(value);
    const Object path = dictionary != nullptr ? dictionary->objectForKey(u"path") : value;
    job.path = NSString::fromObject(path).value_or(u"");
    job.rootPath =
        dictionary != nullptr ? NSString::fromObject(dictionary->objectForKey(u"rootPath")) : std::nullopt;
}

void setSaveFolder(ResizeJob& job, const Object& value) {
    OptionalString folder = NSString::fromObject(value);
    if (value != nullptr && !folder)
        throw unfitValue(u"saveFolderPath");
    job.saveFolderPath = std::move(folder);
}

ResizeSets setsIn(const Object& value) {
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

} // namespace

void ResizeUnit::setValueForKey(const Object& value, const NSString& key) {
    if (key == u"filepath")
        return setFile(job_, value);
    if (key == u"saveFolderPath")
        return setSaveFolder(job_, value);
    if (key == u"resizeSets") {
        sets_ = setsIn(value);
        return;
    }
    throw NSException("NSUnknownKeyException", "ResizeUnit has no field " + key.utf8());
}

void ResizeUnit::resize(const Object&) {
    job_.recipes = recipesOf(sets_);
    std::vector<Object> resultPaths;
    for (const JobOutcome& outcome : runJob(job_))
        resultPaths.push_back(outcome.path.object());
    const auto info = std::make_shared<NSDictionary>(
        std::map<NSString, Object>{{resultPathsKey, std::make_shared<NSArray>(std::move(resultPaths))}});
    NSNotificationCenter::defaultCenter().postNotification(RUResizeHasDone, weak_from_this().lock(), info);
}

NSString ResizeUnit::uniqueFileName(const NSString& path) { return kestrine::uniqueFileName(path); }

} // namespace kestrine
