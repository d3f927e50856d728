#include "platform/host/files/FolderLock.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>

namespace kestrine {

Result<FolderLock> FolderLock::take(const std::string& folder) {
    FileDescriptor descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!descriptor.isOpen())
        return systemFailure("cannot open " + folder);
    while (::flock(descriptor.number(), LOCK_EX) != 0)
        if (errno != EINTR)
            return systemFailure("cannot lock " + folder);
    return FolderLock(std::move(descriptor));
}

} // namespace kestrine
