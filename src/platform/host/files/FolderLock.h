// FolderLock: an advisory lock on a folder, held while a file in it is read, changed and replaced.
// It leaves no lock file.
#pragma once

#include "platform/host/files/FileDescriptor.h"

#include <string>

namespace kestrine {

class FolderLock {
public:
    /// Waits for the lock on an existing folder. The lock is released when the object or the process ends.
    static Result<FolderLock> take(const std::string& folder);

private:
    explicit FolderLock(FileDescriptor folder) : folder_(std::move(folder)) {}

    FileDescriptor folder_;
};

} // namespace kestrine
