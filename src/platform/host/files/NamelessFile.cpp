#include "platform/host/files/NamelessFile.h"

#include "platform/host/files/PathParts.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace kestrine {

Result<NamelessFile> NamelessFile::create(int folder, int access, mode_t mode,
                                          const std::string& folderPath) {
    return opened(FileDescriptor(::openat(folder, ".", O_TMPFILE | O_CLOEXEC | access, mode)), folderPath);
}

Result<NamelessFile> NamelessFile::createFor(const std::string& folderPath, mode_t mode) {
    std::string folder = folderPath;
    for (;;) {
        FileDescriptor file(::open(folder.c_str(), O_TMPFILE | O_CLOEXEC | O_RDWR, mode));
        const std::string above = folderOf(folder);
        if (file.isOpen() || errno != ENOENT || above == folder)
            return opened(std::move(file), folder);
        folder = above;
    }
}

Result<NamelessFile> NamelessFile::opened(FileDescriptor file, const std::string& folderPath) {
    if (file.isOpen())
        return NamelessFile(std::move(file));
    if (isMissing(errno))
        return Failure{Reason::unsupported, "this system has no nameless files"};
    return systemFailure("cannot create a file in " + folderPath);
}

int NamelessFile::giveName(const FolderEntry& entry) const {
    const std::string source = "/proc/self/fd/" + std::to_string(file_.number());
    const int result =
        ::linkat(AT_FDCWD, source.c_str(), entry.folder, entry.name.c_str(), AT_SYMLINK_FOLLOW);
    return result == 0 ? 0 : errno;
}

/// The errors of file systems, kernels and sandboxes that lack nameless files or cannot link them. ENOENT
/// means that /proc is not mounted.
bool NamelessFile::isMissing(int error) {
    constexpr std::array errors{EOPNOTSUPP, EISDIR, EINVAL, ENOSYS, ENOENT, EPERM, EACCES, EXDEV};
    return std::find(errors.begin(), errors.end(), error) != errors.end();
}

} // namespace kestrine
