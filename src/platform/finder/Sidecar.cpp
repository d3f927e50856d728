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

/// A resource fork has at most 16 MiB, since its offsets have 24 bits; the rest is small.
constexpr std::uint64_t largestSidecar = 17 * 1024 * 1024;

/// A name in a folder that is held open.
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
        return Failure{Reason::notFound, "nothing lies beside the root folder"};
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

/// Of an open file; its times are set to now, for its content is about to change.
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
    return reader->readAll(largestSidecar);
}

Result<void> replaceSidecar(const std::string& path, ByteView content) {
    SidecarPlace place = TRY(placeBeside(path));
    FileDescriptor old = TRY(openSidecar(place, O_RDWR));
    struct stat status = TRY(statusForNewContent(old.number(), place.name));

    const int folder = place.folder.number();
    TemporaryFile file = TRY(TemporaryFile::create(folder, 0600));
    if (Result<void> written = writeAll(file.descriptor(), content); !written)
        return written;
    if (Result<void> kept = copyAttributes(old.number(), file.descriptor(), status); !kept)
        return kept;
    if (Result<void> finished = finishWriting(file.descriptor(), Durability::synced); !finished)
        return finished;
    if (::renameat(folder, file.entry().name.c_str(), folder, place.name.c_str()) != 0)
        return systemFailure("cannot replace " + place.name);
    file.wasRenamed();
    return syncFolder(folder);
}

} // namespace kestrine
