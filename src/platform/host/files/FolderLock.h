// FolderLock: keeps other processes that ask for the same lock out, while one file in a folder is read,
// changed and replaced. Nothing is left behind.
#pragma once

#include "platform/host/files/FileDescriptor.h"

#include <string>

namespace kestrine {

class FolderLock {
public:
    /// Waits for the lock on an existing folder. It is given back when the object, or the process, ends.
    static Result<FolderLock> take(const std::string& folder);

private:
    explicit FolderLock(FileDescriptor folder) : folder_(std::move(folder)) {}

    FileDescriptor folder_;
};

} // namespace kestrine
