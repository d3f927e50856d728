// TemporaryFile: a file under a hidden name that goes away again unless it gets its final name.
#pragma once

#include "platform/host/files/FileDescriptor.h"
#include "platform/host/files/FolderEntry.h"

#include <sys/types.h>

namespace kestrine {

/// Move-only. The folder's descriptor must outlive it.
class TemporaryFile {
public:
    /// Makes an empty file, open for reading and writing, with `mode` less the umask.
    static Result<TemporaryFile> create(int folder, mode_t mode);

    TemporaryFile(TemporaryFile&& other) noexcept
        : entry_{other.entry_.folder, std::exchange(other.entry_.name, {})}, file_(std::move(other.file_)) {}
    TemporaryFile& operator=(TemporaryFile&&) = delete;
    ~TemporaryFile();

    int descriptor() const { return file_.number(); }
    const FolderEntry& entry() const { return entry_; }

    /// Call when the hidden name is gone because the file was renamed.
    void wasRenamed() { entry_.name.clear(); }

private:
    TemporaryFile(FolderEntry entry, FileDescriptor file)
        : entry_(std::move(entry)), file_(std::move(file)) {}

    FolderEntry entry_;
    FileDescriptor file_;
};

} // namespace kestrine
