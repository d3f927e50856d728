#include "platform/host/files/FileCopy.h"

#include "platform/host/files/FileContent.h"
#include "platform/host/files/FileDescriptor.h"

#include <algorithm>
#include <array>
#include <climits>
#include <fcntl.h>
#include <unistd.h>

namespace kestrine {

namespace {

constexpr std::size_t blockSize = 256 * 1024;

/// Reads until the block is full or the file ends.
Result<ByteView> readBlock(int file, std::uint64_t offset, Bytes& block) {
    const PartRead read = readAt(file, block, offset);
    return read.error == 0 ? Result(ByteView(block).first(read.bytes))
                           : systemFailure("cannot read", read.error);
}

Failure changedDuringCopy() { return {Reason::truncated, "the file changed during the copy"}; }

Result<void> copyBytes(int from, int to, off_t size) {
    Bytes block(blockSize);
    for (std::uint64_t offset = 0;;) {
        const ByteView bytes = TRY(readBlock(from, offset, block));
        TRY(writeAll(to, bytes));
        offset += bytes.size();
        if (bytes.size() == block.size())
            continue;
        return offset == static_cast<std::uint64_t>(size) ? Result<void>() : changedDuringCopy();
    }
}

Result<void> copyAndVerify(int from, int to, off_t size) {
    TRY(copyBytes(from, to, size));
    TRY(finishWriting(to, Durability::synced));
    // Asks the system to drop its cached pages, so that the comparison reads from the disk where possible.
    (void)::posix_fadvise(to, 0, 0, POSIX_FADV_DONTNEED);
    return compareContents(from, to);
}

/// The set-user-ID, set-group-ID and sticky bits would have another meaning under another owner.
mode_t rightsFor(const struct stat& status, bool hasOwner) {
    return status.st_mode & (hasOwner ? 07777 : 0777);
}

} // namespace

Result<void> compareContents(int first, int second) {
    Bytes firstBlock(blockSize), secondBlock(blockSize);
    for (std::uint64_t offset = 0;; offset += blockSize) {
        const ByteView one = TRY(readBlock(first, offset, firstBlock));
        const ByteView two = TRY(readBlock(second, offset, secondBlock));
        if (!std::equal(one.begin(), one.end(), two.begin(), two.end()))
            return Failure{Reason::inputOutput, "the copy differs from the file"};
        if (one.size() < blockSize)
            return {};
    }
}

Result<void> copyAttributes(int from, int to, const struct stat& status, AttributeLoss loss) {
    TRY(copyExtendedAttributes(from, to, loss));
    const bool hasOwner = ::fchown(to, status.st_uid, status.st_gid) == 0;
    if (::fchmod(to, rightsFor(status, hasOwner)) != 0)
        return systemFailure("cannot copy the permissions");
    const timespec times[2] = {status.st_atim, status.st_mtim};
    if (::futimens(to, times) != 0)
        return systemFailure("cannot copy the times");
    return {};
}

Result<void> fillCopy(const FolderEntry& from, int copy, const struct stat& status, AttributeLoss loss) {
    const FileDescriptor source(
        ::openat(from.folder, from.name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!source.isOpen())
        return systemFailure("cannot open " + from.name);
    struct stat opened {};
    if (::fstat(source.number(), &opened) != 0 || !isSameItem(opened, status))
        return changedDuringCopy();
    TRY(copyAndVerify(source.number(), copy, status.st_size));
    TRY(copyAttributes(source.number(), copy, status, loss));
    return finishWriting(copy, Durability::synced);
}

Result<void> copyRegularFile(const FolderEntry& from, const FolderEntry& to, const struct stat& status,
                             AttributeLoss loss) {
    const FileDescriptor target(
        ::openat(to.folder, to.name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!target.isOpen())
        return systemFailure("cannot create a copy of " + from.name);
    return fillCopy(from, target.number(), status, loss);
}

Result<void> copySymbolicLink(const FolderEntry& from, const FolderEntry& to, const struct stat& status) {
    std::array<char, PATH_MAX + 1> text{};
    if (::readlinkat(from.folder, from.name.c_str(), text.data(), PATH_MAX) < 0)
        return systemFailure("cannot read the link " + from.name);
    if (::symlinkat(text.data(), to.folder, to.name.c_str()) != 0)
        return systemFailure("cannot create a copy of the link " + from.name);
    (void)(::fchownat(to.folder, to.name.c_str(), status.st_uid, status.st_gid, AT_SYMLINK_NOFOLLOW) == 0);
    const timespec times[2] = {status.st_atim, status.st_mtim};
    if (::utimensat(to.folder, to.name.c_str(), times, AT_SYMLINK_NOFOLLOW) != 0)
        return systemFailure("cannot copy the times");
    return {};
}

} // namespace kestrine
