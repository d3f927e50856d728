// NamelessFile: a regular file that gets its name when it is complete. A crash before that leaves nothing.
#pragma once

#include "platform/host/files/FileDescriptor.h"
#include "platform/host/files/FolderEntry.h"

#include <sys/types.h>

namespace kestrine {

/// Move-only. Without giveName() the file vanishes with this object or with the process.
class NamelessFile {
public:
    /// Creates an empty file on the file system of `folder`. `access` is O_WRONLY or O_RDWR, and the file has
    /// `mode` minus the umask. Fails with unsupported if this system has no nameless files; `folderPath` is
    /// for the message of other failures.
    static Result<NamelessFile> create(int folder, int access, mode_t mode, const std::string& folderPath);

    /// The same, open for reading and writing, for a name in the folder at `folderPath`. If that does not
    /// exist yet, the file is made for the closest folder above it. What a file gets from its folder (group,
    /// access control list) it gets from the folder it is made for.
    static Result<NamelessFile> createFor(const std::string& folderPath, mode_t mode);

    int descriptor() const { return file_.number(); }

    /// Makes the entry a name of the file. Returns 0 or the system's error number: EEXIST if the name is in
    /// use. If isMissing() is true for the error, no name can be given at all.
    int giveName(const FolderEntry& entry) const;

    /// Whether this error of giveName() means that the system lacks the feature.
    static bool isMissing(int error);

private:
    /// `file` was just opened, or errno holds the reason why it could not be.
    static Result<NamelessFile> opened(FileDescriptor file, const std::string& folderPath);
    explicit NamelessFile(FileDescriptor file) : file_(std::move(file)) {}

    FileDescriptor file_;
};

} // namespace kestrine
