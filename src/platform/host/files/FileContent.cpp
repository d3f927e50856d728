#include "platform/host/files/FileContent.h"

#include "platform/host/files/ByteReader.h"
#include "platform/host/files/FileDescriptor.h"
#include "platform/host/files/PathParts.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace kestrine {

Result<Bytes> readSmallFile(const std::string& path, std::uint64_t limit) {
    TRY(checkPath(path));
    std::shared_ptr<const ByteReader> reader = TRY(readerOfPath(path));
    return reader->readAll(limit);
}

Result<void> writeAll(int file, ByteView content) {
    while (!content.empty()) {
        const ssize_t written = ::write(file, content.data(), content.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0)
            return systemFailure("cannot write");
        content = content.subspan(static_cast<std::size_t>(written));
    }
    return {};
}

Result<void> finishWriting(int file, Durability durability) {
    if (durability == Durability::synced && ::fsync(file) != 0)
        return systemFailure("cannot bring the content to the disk");
    // Closing any duplicate flushes; the number itself must stay open for the link that names the file.
    FileDescriptor duplicate(::fcntl(file, F_DUPFD_CLOEXEC, 0));
    if (!duplicate.isOpen())
        return systemFailure("cannot finish writing");
    return duplicate.close();
}

Result<void> syncFolder(int folder) {
    const bool synced = ::fsync(folder) == 0 || errno == EINVAL || errno == EBADF || errno == EROFS
                        || errno == EOPNOTSUPP || errno == ENOSYS;
    if (!synced)
        return systemFailure("cannot bring the folder to the disk");
    return {};
}

Result<void> removeFile(const std::string& path) {
    TRY(checkPath(path));
    if (::unlink(path.c_str()) != 0)
        return systemFailure("cannot remove " + path);
    return {};
}

} // namespace kestrine
