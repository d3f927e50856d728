// TemporaryFile: a file with a hidden name, which is removed unless the file is renamed.
#pragma once

#include "platform/host/files/FileDescriptor.h"
#include "platform/host/files/FolderEntry.h"
#include "platform/host/files/NamelessFile.h"

#include <sys/types.h>

namespace kestrine {

/// Move-only. The descriptor of the folder must outlive this object.
class TemporaryFile {
public:
    /// Creates an empty file with `mode` minus the umask, and opens it for reading and writing. `folderPath`
    /// is for the message of a failure. `name` must come from temporaryName().
    static Result<TemporaryFile> create(int folder, mode_t mode, const std::string& folderPath,
                                        std::string name = temporaryName());

    /// Gives a nameless file this name, which must come from temporaryName(), in a folder. Fails with
    /// unsupported if it can have no name there.
    static Result<TemporaryFile> of(const NamelessFile& file, int folder, std::string name);

    TemporaryFile(TemporaryFile&& other) noexcept
        : entry_{other.entry_.folder, std::exchange(other.entry_.name, {})}, file_(std::move(other.file_)) {}
    TemporaryFile& operator=(TemporaryFile&&) = delete;
    ~TemporaryFile();

    int descriptor() const { return file_.number(); }
    const FolderEntry& entry() const { return entry_; }

    /// To be called after the file was renamed: the destructor then removes nothing.
    void wasRenamed() { entry_.name.clear(); }

private:
    TemporaryFile(FolderEntry entry, FileDescriptor file)
        : entry_(std::move(entry)), file_(std::move(file)) {}

    FolderEntry entry_;
    FileDescriptor file_;
};

} // namespace kestrine
