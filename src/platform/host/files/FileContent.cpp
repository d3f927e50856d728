#include "platform/host/files/FileContent.h"

#include "platform/host/files/ByteReader.h"
#include "platform/host/files/DuplicatedDescriptor.h"
#include "platform/host/files/FileDescriptor.h"
#include "platform/host/files/PathParts.h"

#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace kestrine {

Result<Bytes> readSmallFile(const std::string& path, std::uint64_t limit) {
    TRY(checkPath(path));
    std::shared_ptr<const ByteReader> reader = TRY(readerOfPath(path));
    return reader->readAll(limit);
}

PartRead readAt(int file, std::span<std::uint8_t> into, std::uint64_t offset) {
    PartRead read;
    while (read.bytes < into.size()) {
        const ssize_t count = ::pread(file, into.data() + read.bytes, into.size() - read.bytes,
                                      static_cast<off_t>(offset + read.bytes));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            read.error = errno;
        if (count <= 0)
            break;
        read.bytes += static_cast<std::size_t>(count);
    }
    return read;
}

Result<void> forEachBlock(int file, const std::function<Result<void>(ByteView block)>& use) {
    Bytes block(std::size_t{256} * 1024);
    for (off_t offset = 0;;) {
        const ssize_t count = ::pread(file, block.data(), block.size(), offset);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return systemFailure("cannot read");
        if (count == 0)
            return {};
        TRY(use(ByteView(block).first(static_cast<std::size_t>(count))));
        offset += count;
    }
}

bool waitsToRetryWrite(int file) {
    if (errno == EINTR)
        return true;
    if (errno != EAGAIN)
        return false;
    pollfd writable{file, POLLOUT, 0};
    return ::poll(&writable, 1, -1) > 0 || errno == EINTR;
}

Result<void> writeAll(int file, ByteView content) {
    while (!content.empty()) {
        const ssize_t written = ::write(file, content.data(), content.size());
        if (written >= 0)
            content = content.subspan(static_cast<std::size_t>(written));
        else if (!waitsToRetryWrite(file))
            return systemFailure("cannot write");
    }
    return {};
}

Result<void> writeAllAt(int file, ByteView content, std::uint64_t offset, const char* failing) {
    while (!content.empty()) {
        const ssize_t written = ::pwrite(file, content.data(), content.size(), static_cast<off_t>(offset));
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0)
            return systemFailure(failing);
        content = content.subspan(static_cast<std::size_t>(written));
        offset += static_cast<std::uint64_t>(written);
    }
    return {};
}

Result<void> finishWriting(int file, Durability durability) {
    if (durability == Durability::synced && ::fsync(file) != 0)
        return systemFailure("cannot write the content to the disk");
    // Closing a duplicate reports the errors. The original stays open: publishing needs it to name the file.
    return TRY(duplicated(file)).close();
}

Result<void> syncFolder(int folder) {
    const bool synced = ::fsync(folder) == 0 || errno == EINVAL || errno == EBADF || errno == EROFS
                        || errno == EOPNOTSUPP || errno == ENOSYS;
    if (!synced)
        return systemFailure("cannot write the folder to the disk");
    return {};
}

Result<void> removeFile(const std::string& path) {
    TRY(checkPath(path));
    if (::unlink(path.c_str()) != 0)
        return systemFailure("cannot remove " + path);
    return {};
}

} // namespace kestrine
