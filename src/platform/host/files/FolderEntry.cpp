#include "platform/host/files/FolderEntry.h"

#include "platform/host/files/FileDescriptor.h"

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace kestrine {

Result<struct stat> statusOf(const FolderEntry& entry) {
    struct stat status {};
    if (::fstatat(entry.folder, entry.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        return systemFailure("cannot examine " + entry.name);
    return status;
}

bool isSameItem(const struct stat& one, const struct stat& other) {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

std::string temporaryName() {
    std::uint64_t number = 0;
    if (::getentropy(&number, sizeof number) != 0)
        number = static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    char name[40];
    (void)std::snprintf(name, sizeof name, ".%016llx.kestrine-tmp", static_cast<unsigned long long>(number));
    return name;
}

} // namespace kestrine
