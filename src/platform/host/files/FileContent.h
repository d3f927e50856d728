// Reading, writing and removing whole files.
#pragma once

#include "platform/host/Bytes.h"
#include "platform/host/Result.h"

#include <functional>
#include <span>
#include <string>

namespace kestrine {

/// Whether written bytes must be on the disk before an operation succeeds.
enum class Durability {
    cached, ///< the system writes them later
    synced, ///< they are on the disk and survive a power failure
};

/// All bytes of a regular file. Fails with tooLarge if there are more than `limit`.
Result<Bytes> readSmallFile(const std::string& path, std::uint64_t limit);

struct PartRead {
    std::size_t bytes = 0;
    int error = 0; ///< errno of what ended it, or 0
};
/// Reads from `offset` on until `into` is full, the file ends or an error occurs. The position does not
/// change.
PartRead readAt(int file, std::span<std::uint8_t> into, std::uint64_t offset);

/// Gives the content of a file that is open for reading to `use`, block by block, until it fails or the file
/// ends. The position does not change.
Result<void> forEachBlock(int file, const std::function<Result<void>(ByteView block)>& use);

/// Whether to repeat a write that has just failed, according to errno: it was interrupted, or the descriptor
/// is a full non-blocking pipe. Waits until the pipe has room again.
bool waitsToRetryWrite(int file);

/// Writes all of `content` at the current position of the open file. Waits while a pipe or socket is full,
/// even if it is non-blocking.
Result<void> writeAll(int file, ByteView content);
/// The same at `offset`; the position does not change. `failing` begins the message of a failure.
Result<void> writeAllAt(int file, ByteView content, std::uint64_t offset,
                        const char* failing = "cannot write");

/// Reports the errors of earlier writes (network file systems report them on closing), and writes the content
/// to the disk for Durability::synced. The descriptor stays open.
Result<void> finishWriting(int file, Durability durability);

/// Writes the entries of a folder to the disk. Succeeds without effect if the system cannot sync this folder.
Result<void> syncFolder(int folder);

/// Removes a file or link. Fails for a folder.
Result<void> removeFile(const std::string& path);

} // namespace kestrine
