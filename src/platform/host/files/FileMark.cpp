#include "platform/host/files/FileMark.h"

#include "platform/host/files/FileAttributes.h"

namespace kestrine {

namespace {

Result<FileMark> markOf(const std::string& path, FollowLinks follow) {
    constexpr std::int64_t nanoseconds = 1'000'000'000;
    const struct stat status = TRY(attributesOf(path, follow));
    return FileMark{status.st_dev, status.st_ino, static_cast<std::uint64_t>(status.st_size),
                    status.st_mtim.tv_sec * nanoseconds + status.st_mtim.tv_nsec};
}

} // namespace

Result<FileMark> markOfFile(const std::string& path) { return markOf(path, FollowLinks::yes); }

Result<FileMark> markOfItem(const std::string& path) { return markOf(path, FollowLinks::no); }

} // namespace kestrine
