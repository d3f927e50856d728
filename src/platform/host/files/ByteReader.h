// ByteReader: random access to the bytes of an input of known size.
#pragma once

#include "platform/host/Bytes.h"
#include "platform/host/Result.h"
#include "platform/host/files/FileDescriptor.h"

#include <memory>
#include <optional>

namespace kestrine {

/// Reading moves no shared position, so several threads may use one reader at the same time.
class ByteReader {
public:
    virtual ~ByteReader() = default;

    /// Length in bytes at the time when the reader was created.
    virtual std::uint64_t size() const = 0;

    /// Copies bytes from `offset` on to `into` and returns their number. It is smaller than the size of
    /// `into` only at the end of the input or after a system error, which failure() then gives.
    virtual std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> into) const = 0;

    /// The first error of the system while reading; nullopt if there was none. A reader that wraps another
    /// one reports none; the wrapped one does.
    virtual std::optional<Failure> failure() const { return std::nullopt; }

    /// The descriptor of the open file that is read, which the reader keeps; -1 if the bytes are in memory.
    virtual int descriptor() const { return -1; }

    /// All bytes. Fails with tooLarge if there are more than `limit`, with failure() after a system error,
    /// and with truncated if the input has become shorter since the reader was created.
    Result<Bytes> readAll(std::uint64_t limit) const;
};

/// `made`, which was made from the input of `reader`. Fails with the reader's failure() if there is one,
/// since a decoder cannot tell an unreadable part from the end of the input. A null reader has none.
template <class T>
Result<T> orReadError(const ByteReader* reader, Result<T> made) {
    if (std::optional<Failure> error = reader == nullptr ? std::nullopt : reader->failure())
        return *std::move(error);
    return made;
}

/// Reads from `bytes`, which the reader owns.
std::shared_ptr<const ByteReader> readerOfBytes(Bytes bytes);

/// Reads from `bytes`, which must stay unchanged as long as the reader exists.
std::shared_ptr<const ByteReader> readerOfBorrowedBytes(ByteView bytes);

/// Reads from an open regular file. The reader owns the descriptor, so it keeps working after the file was
/// moved or removed. Fails with notRegularFile for anything else.
Result<std::shared_ptr<const ByteReader>> readerOfFile(FileDescriptor file);

/// Reads from an open file of which `size` bytes are used. For processes that may not ask for the size.
std::shared_ptr<const ByteReader> readerOfFile(FileDescriptor file, std::uint64_t size);

/// Opens the regular file at `path` for reading. `path` is passed to the system unchanged.
Result<std::shared_ptr<const ByteReader>> readerOfPath(const std::string& path);

} // namespace kestrine
