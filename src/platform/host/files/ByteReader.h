// ByteReader: random access to the bytes of an input, whose size is known from the start.
#pragma once

#include "platform/host/Bytes.h"
#include "platform/host/files/FileDescriptor.h"
#include "platform/host/Result.h"

#include <memory>

namespace kestrine {

/// Reading never moves a shared position, so one reader may serve several threads at once.
class ByteReader {
public:
    virtual ~ByteReader() = default;

    /// Length in bytes, as it was when the reader was made.
    virtual std::uint64_t size() const = 0;

    /// Fills `into` from `offset` on and returns how many bytes there were: fewer than asked only at the
    /// end of the input or when the system fails (0 from then on).
    virtual std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> into) const = 0;

    /// All bytes, or tooLarge beyond `limit`, or truncated when the input has shrunk meanwhile.
    Result<Bytes> readAll(std::uint64_t limit) const;
};

/// Bytes in memory; the reader owns them.
std::shared_ptr<const ByteReader> readerOfBytes(Bytes bytes);

/// The regular file behind an open descriptor; the reader owns the descriptor, so the file may be moved
/// or removed without harm. Fails when the descriptor is no regular file.
Result<std::shared_ptr<const ByteReader>> readerOfFile(FileDescriptor file);

/// Opens the regular file at `path` (bytes as the system has them) for reading.
Result<std::shared_ptr<const ByteReader>> readerOfPath(const std::string& path);

} // namespace kestrine
