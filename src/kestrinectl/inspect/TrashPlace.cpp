#include "kestrinectl/inspect/TrashPlace.h"

#include "kestrinectl/convert/ConvertInputs.h"
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

} // namespace

std::string trashPlaceOf(const std::string& folder) {
    const std::string path = canonicalPath(absolutePath(folder)).native();
    const std::string dataHome = Environment::ofProcess().xdgDataHome();
    const std::string homeTrash = dataHome.empty() ? "" : joinedPath(dataHome, "Trash");
    if (!mayChangeFolder(path))
        return "originals cannot go to the trash: the folder is not writable; get write permission for it";
    if (!homeTrash.empty() && isOnOneDevice(path, homeTrash))
        return mayChangeFolder(existingPartOf(homeTrash))
                   ? "originals go to " + homeTrash
                   : "originals cannot go to the trash: " + homeTrash
                         + " is not writable; get write permission for it";
    const Result<std::string> top = topFolderOf(path);
    if (!top)
        return "originals cannot go to the trash: the file system of the folder cannot be determined";
    return "originals go to the trash of the file system at " + *top + ", or else as copies to " + homeTrash;
}

} // namespace kestrine
