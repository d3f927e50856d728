#include "kestrinectl/shards/RootFolder.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/GivenPaths.h"
#include "kestrinectl/text/ShownPath.h"
#include "platform/host/files/FileStatus.h"
#include "platform/host/files/PathParts.h"

namespace kestrine {

RootFolder::RootFolder(const std::string& path) {
    if (!folderExists(path))
        throw CommandError("the root " + shownPath(path) + " is not a folder", 2);
    const std::string root = canonicalPath(path).native();
    prefix_ = root.ends_with('/') ? root : root + "/";
}

std::optional<std::string> RootFolder::relative(const std::string& path) const {
    const std::string folder = folderOf(path);
    std::string place;
    {
        const std::lock_guard lock(mutex_);
        const auto [known, isNew] = folders_.try_emplace(folder);
        if (isNew)
            known->second = canonicalPath(folder).native();
        place = joinedPath(known->second, nameOf(path));
    }
    if (!place.starts_with(prefix_) || place.size() == prefix_.size())
        return std::nullopt;
    return place.substr(prefix_.size());
}

} // namespace kestrine
