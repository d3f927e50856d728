#include "platform/host/files/Folders.h"

#include "platform/host/files/FileContent.h"
#include "platform/host/files/PathParts.h"

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace kestrine {

namespace {

struct CloseListing {
    void operator()(DIR* listing) const { ::closedir(listing); }
};

Result<FileDescriptor> openFolderAt(const FolderEntry& entry, int moreFlags) {
    const int flags = O_DIRECTORY | O_CLOEXEC | moreFlags;
    FileDescriptor folder(::openat(entry.folder, entry.name.c_str(), O_RDONLY | flags));
    if (!folder.isOpen() && errno == EACCES)
        folder = FileDescriptor(::openat(entry.folder, entry.name.c_str(), O_PATH | flags));
    if (!folder.isOpen())
        return systemFailure("cannot open the folder " + entry.name);
    return folder;
}

/// Returns false if the folder above is missing. A new folder is synced.
Result<bool> makePrivateFolder(const std::string& path) {
    if (::mkdir(path.c_str(), 0700) == 0) {
        FileDescriptor parent = TRY(openFolder(folderOf(path)));
        TRY(syncFolder(parent.number()));
        return true;
    }
    if (errno != EEXIST && errno != ENOENT)
        return systemFailure("cannot create the folder " + path);
    return errno == EEXIST;
}

} // namespace

Result<void> makeFolder(const std::string& path) {
    TRY(checkPath(path));
    if (::mkdir(path.c_str(), 0777) != 0)
        return systemFailure("cannot create the folder " + path);
    return {};
}

Result<void> makePrivateFolders(const std::string& path) {
    TRY(checkPath(path));
    if (TRY(makePrivateFolder(path)))
        return {};
    const std::string parent = folderOf(path);
    if (parent.size() < path.size()) {
        TRY(makePrivateFolders(parent));
        if (TRY(makePrivateFolder(path)))
            return {};
    }
    return systemFailure("cannot create the folder " + path, ENOENT);
}

bool mayChangeFolder(const std::string& path) {
    return ::faccessat(AT_FDCWD, path.c_str(), W_OK | X_OK, AT_EACCESS) == 0;
}

Result<FileDescriptor> openFolder(const std::string& path) {
    TRY(checkPath(path));
    return openFolderAt({AT_FDCWD, path}, 0);
}

Result<FileDescriptor> openSubfolder(const FolderEntry& entry) { return openFolderAt(entry, O_NOFOLLOW); }

Result<std::vector<std::string>> namesIn(int folder) {
    // Opens the folder again, because listing moves the position of a descriptor.
    const int own = ::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    std::unique_ptr<DIR, CloseListing> listing(own < 0 ? nullptr : ::fdopendir(own));
    if (!listing)
        return systemFailure("cannot list a folder");
    std::vector<std::string> names;
    for (errno = 0; const dirent* entry = ::readdir(listing.get()); errno = 0) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..")
            names.emplace_back(name);
    }
    if (errno != 0)
        return systemFailure("cannot list a folder");
    return names;
}

std::size_t maxNameLengthIn(int folder) {
    const long length = ::fpathconf(folder, _PC_NAME_MAX);
    return length > 0 ? static_cast<std::size_t>(length) : 255;
}

} // namespace kestrine
