#include "platform/finder/Sidecar.h"

#include "platform/host/FreeDeleter.h"
#include "platform/host/files/ByteReader.h"
#include "platform/host/files/FileContent.h"
#include "platform/host/files/FileCopy.h"
#include "platform/host/files/Folders.h"
#include "platform/host/files/PathParts.h"
#include "platform/host/files/TemporaryFile.h"

#include <cerrno>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <memory>

namespace kestrine {

namespace {

/// Bytes. A resource fork has at most 16 MiB, because its offsets have 24 bits; the other entries are small.
constexpr std::uint64_t maxSidecarSize = 17 * 1024 * 1024;

/// A name in an open folder.
struct SidecarPlace {
    FileDescriptor folder;
    std::string name;
};

Result<SidecarPlace> placeBeside(const std::string& path) {
    TRY(checkPath(path));
    const std::unique_ptr<char, FreeDeleter> resolved(::realpath(path.c_str(), nullptr));
    if (!resolved)
        return systemFailure("cannot find " + path);
    const std::string item = resolved.get();
    if (nameOf(item).empty())
        return Failure{Reason::notFound, "the root folder has no sidecar"};
    FileDescriptor folder = TRY(openFolder(folderOf(item)));
    return SidecarPlace{std::move(folder), "._" + nameOf(item)};
}

/// `access` is O_RDONLY or O_RDWR.
Result<FileDescriptor> openSidecar(const SidecarPlace& place, int access) {
    const int flags = access | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    FileDescriptor file(::openat(place.folder.number(), place.name.c_str(), flags));
    if (!file.isOpen() && errno == ELOOP)
        return Failure{Reason::notRegularFile, place.name + " is a symbolic link"};
    if (!file.isOpen())
        return systemFailure("cannot open " + place.name);
    return file;
}

/// The status of an open file with the current time as access and modification time.
Result<struct stat> statusForNewContent(int file, const std::string& name) {
    struct stat status {};
    if (::fstat(file, &status) != 0)
        return systemFailure("cannot examine " + name);
    if (!S_ISREG(status.st_mode))
        return Failure{Reason::notRegularFile, name + " is not a regular file"};
    (void)::clock_gettime(CLOCK_REALTIME, &status.st_mtim);
    status.st_atim = status.st_mtim;
    return status;
}

} // namespace

Result<Bytes> readSidecar(const std::string& path) {
    SidecarPlace place = TRY(placeBeside(path));
    FileDescriptor file = TRY(openSidecar(place, O_RDONLY));
    std::shared_ptr<const ByteReader> reader = TRY(readerOfFile(std::move(file)));
    return reader->readAll(maxSidecarSize);
}

Result<void> replaceSidecar(const std::string& path, ByteView content) {
    SidecarPlace place = TRY(placeBeside(path));
    FileDescriptor old = TRY(openSidecar(place, O_RDWR));
    struct stat status = TRY(statusForNewContent(old.number(), place.name));

    const int folder = place.folder.number();
    TemporaryFile file = TRY(TemporaryFile::create(folder, 0600, folderOf(path)));
    TRY(writeAll(file.descriptor(), content));
    TRY(copyAttributes(old.number(), file.descriptor(), status));
    TRY(finishWriting(file.descriptor(), Durability::synced));
    if (::renameat(folder, file.entry().name.c_str(), folder, place.name.c_str()) != 0)
        return systemFailure("cannot replace " + place.name);
    file.wasRenamed();
    return syncFolder(folder);
}

} // namespace kestrine
