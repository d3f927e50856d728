#include "kestrinectl/inspect/TrashPlace.h"

#include "kestrinectl/GivenPaths.h"
#include "kestrinectl/text/ShownPath.h"
#include "platform/host/files/FileMark.h"
#include "platform/host/files/FileStatus.h"
#include "platform/host/files/Folders.h"
#include "platform/host/files/MountPoints.h"
#include "platform/host/files/PathParts.h"
#include "platform/host/process/Environment.h"

namespace kestrine {

namespace {

bool isOnOneDevice(const std::string& one, const std::string& other) {
    const Result<FileMark> first = markOfFile(existingPartOf(one)),
                           second = markOfFile(existingPartOf(other));
    return first && second && first->device == second->device;
}

TrashPlace impossible(const std::string& why) { return {false, "originals cannot go to the trash: " + why}; }

TrashPlace unwritable(const std::string& what) {
    return impossible(what + " is not writable; get write permission for it");
}

} // namespace

TrashPlace trashPlaceOf(const std::string& folder) {
    const std::string path = canonicalPath(absolutePath(folder)).native();
    const std::string dataHome = Environment::ofProcess().xdgDataHome();
    const std::string homeTrash = dataHome.empty() ? "" : joinedPath(dataHome, "Trash");
    if (!mayChangeFolder(path))
        return unwritable("the folder");
    if (!homeTrash.empty() && isOnOneDevice(path, homeTrash))
        return mayChangeFolder(existingPartOf(homeTrash))
                   ? TrashPlace{true, "originals go to " + shownPath(homeTrash)}
                   : unwritable(shownPath(homeTrash));
    const Result<std::string> top = topFolderOf(path);
    if (!top)
        return impossible("the file system of the folder cannot be determined");
    const std::string otherwise = homeTrash.empty() ? "" : ", or else as copies to " + shownPath(homeTrash);
    return {true, "originals go to the trash of the file system at " + shownPath(*top) + otherwise};
}

} // namespace kestrine
