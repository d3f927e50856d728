// MemoryFile: a file that exists only in memory, to pass bytes between two processes.
#pragma once

#include "platform/host/Bytes.h"
#include "platform/host/files/FileDescriptor.h"

namespace kestrine {

/// Move-only. Each process has a descriptor of the same file; the position of the descriptors is not used.
/// The file is never mapped, so the other process cannot harm this one by making it shorter.
class MemoryFile {
public:
    /// A new, empty file. Programs that this process starts do not inherit it.
    static Result<MemoryFile> create();

    /// A file that another process created.
    explicit MemoryFile(FileDescriptor file) : file_(std::move(file)) {}

    int number() const { return file_.number(); }

    /// The descriptor, which the caller owns from now on.
    FileDescriptor release() && { return std::move(file_); }

    /// Writes all of `bytes` at `offset`.
    Result<void> write(ByteView bytes, std::uint64_t offset) const;
    /// Fails with truncated if the file ends before.
    Result<Bytes> read(std::uint64_t offset, std::uint64_t size) const;
    /// Makes the file empty, which frees its memory.
    void clear() const;

private:
    FileDescriptor file_;
};

} // namespace kestrine
