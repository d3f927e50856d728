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

/// The items' paths without links in their folders, each path once. The items are not kept open: there may be
/// more of them than a process can open.
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

/// Two items of the same name would collide in the folder.
Result<void> checkNamesDiffer(const std::vector<std::string>& paths) {
    std::set<std::string> names;
    for (const std::string& path : paths)
        if (!names.insert(nameOf(path)).second)
            return Failure{Reason::alreadyExists, "two of the items have the name " + nameOf(path)};
    return {};
}

Result<void> removeToTrash(const std::vector<std::string>& items) {
    std::vector<std::string> paths = TRY(lookUpAll(items));
    const Environment environment = Environment::ofProcess();
    for (const std::string& path : paths)
        TRY(moveToTrash(path, environment));
    return {};
}

using Transfer = std::function<Result<void>(const FinderFolder& folder, const FinderItem& item)>;

Result<void> bring(const std::vector<std::string>& items, const std::string& folderPath,
                   const Transfer& transfer) {
    std::vector<std::string> paths = TRY(lookUpAll(items));
    TRY(checkNamesDiffer(paths));
    FinderFolder folder = TRY(lookUpFolder(folderPath));
    for (const std::string& path : paths) {
        FinderItem item = TRY(lookUpItem(path));
        TRY(transfer(folder, item));
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
