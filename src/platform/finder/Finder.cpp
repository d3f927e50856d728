#include "platform/finder/Finder.h"

#include "platform/finder/FinderErrors.h"
#include "platform/finder/FinderTransfer.h"
#include "platform/host/files/PathParts.h"
#include "platform/host/process/Environment.h"
#include "platform/host/trash/Trash.h"

#include <functional>
#include <set>
#include <unistd.h>

namespace kestrine {

namespace {

/// The items as paths without links above them, each once. They are not held open: there may be more of them
/// than a process may open.
Result<std::vector<std::string>> lookUpAll(const std::vector<std::string>& items) {
    std::vector<std::string> paths;
    std::set<std::string> seen;
    for (const std::string& path : items) {
        FinderItem item = TRY(lookUpItem(path));
        if (seen.insert(item.path()).second)
            paths.push_back(item.path());
    }
    return paths;
}

/// The second of two items of one name would meet, or replace, the first.
Result<void> checkNamesDiffer(const std::vector<std::string>& paths) {
    std::set<std::string> names;
    for (const std::string& path : paths)
        if (!names.insert(nameOf(path)).second)
            return Failure{Reason::alreadyExists, "two of the items are called " + nameOf(path)};
    return {};
}

Result<void> removeToTrash(const std::vector<std::string>& items) {
    std::vector<std::string> paths = TRY(lookUpAll(items));
    const Environment environment = Environment::ofProcess();
    for (const std::string& path : paths)
        if (Result<TrashedItem> trashed = moveToTrash(path, environment); !trashed)
            return trashed.failure();
    return {};
}

using Transfer = std::function<Result<void>(const FinderFolder& folder, const FinderItem& item)>;

/// Brings all items into the folder, one after the other.
Result<void> bring(const std::vector<std::string>& items, const std::string& folderPath,
                   const Transfer& transfer) {
    std::vector<std::string> paths = TRY(lookUpAll(items));
    if (Result<void> differ = checkNamesDiffer(paths); !differ)
        return differ;
    FinderFolder folder = TRY(lookUpFolder(folderPath));
    for (const std::string& path : paths) {
        FinderItem item = TRY(lookUpItem(path));
        if (Result<void> brought = transfer(folder, item); !brought)
            return brought;
    }
    return {};
}

Result<void> linkInto(const FinderFolder& folder, const FinderItem& item) {
    if (::symlinkat(item.path().c_str(), folder.descriptor.number(), item.name.c_str()) != 0)
        return systemFailure("cannot make a link to " + item.name);
    return {};
}

FinderOutcome outcomeOf(const Result<void>& result) {
    if (result)
        return std::nullopt;
    return finderError(result.failure());
}

} // namespace

FinderOutcome finderDelete(const std::vector<std::string>& items) { return outcomeOf(removeToTrash(items)); }

FinderOutcome finderDuplicate(const std::vector<std::string>& items, const std::string& folder,
                              Replacing replacing) {
    return outcomeOf(bring(items, folder, [replacing](const FinderFolder& into, const FinderItem& item) {
        return copyInto(into, item, replacing);
    }));
}

FinderOutcome finderMove(const std::vector<std::string>& items, const std::string& folder,
                         Replacing replacing) {
    return outcomeOf(bring(items, folder, [replacing](const FinderFolder& into, const FinderItem& item) {
        return moveInto(into, item, replacing);
    }));
}

FinderOutcome finderLink(const std::vector<std::string>& items, const std::string& folder) {
    return outcomeOf(bring(items, folder, linkInto));
}

} // namespace kestrine
