// The whole content of a file in one go: reading a small one, writing to an open one, taking one away.
#pragma once

#include "platform/host/Bytes.h"
#include "platform/host/Result.h"

#include <string>

namespace kestrine {

/// How sure the bytes must be before a name shows them.
enum class Durability {
    cached, ///< the system writes them when it likes
    synced, ///< they survive a power cut
};

/// All bytes of a regular file; tooLarge beyond `limit`.
Result<Bytes> readSmallFile(const std::string& path, std::uint64_t limit);

/// Writes everything at the descriptor's position, however many calls the system wants for it.
Result<void> writeAll(int file, ByteView content);

/// Asks for the errors of writes that are still under way (network file systems tell them on closing),
/// and brings the content to the disk when `durability` says so. The descriptor stays open.
Result<void> finishWriting(int file, Durability durability);

/// Brings a folder's names to the disk; a file system that cannot be asked for it counts as done.
Result<void> syncFolder(int folder);

/// Removes the name of a file or link; folders stay.
Result<void> removeFile(const std::string& path);

} // namespace kestrine
