#include "platform/host/files/FileTimes.h"

#include "platform/host/files/FileAttributes.h"
#include "platform/host/files/FileDescriptor.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace kestrine {

Result<FileTime> modificationTime(const std::string& path) {
    const struct stat status = TRY(attributesOf(path, FollowLinks::yes));
    return FileTime(std::chrono::seconds(status.st_mtim.tv_sec)
                    + std::chrono::nanoseconds(status.st_mtim.tv_nsec));
}

Result<void> setModificationTime(const std::string& path, FileTime time) {
    const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
    const timespec times[2] = {{0, UTIME_OMIT},
                               {seconds.time_since_epoch().count(), (time - seconds).count()}};
    if (::utimensat(AT_FDCWD, path.c_str(), times, 0) != 0)
        return systemFailure("cannot set the modification time of " + path);
    return {};
}

} // namespace kestrine
