// NSFileHandle: reads a file from any position.
#pragma once

#include "platform/foundation/text/NSString.h"
#include "platform/host/files/ByteReader.h"

#include <memory>

namespace kestrine {

/// For one thread at a time. closeFile() and the destructor close the file.
class NSFileHandle {
public:
    /// `fileHandleForReadingAtPath:`: null (nil) if there is no regular file that can be opened.
    static std::unique_ptr<NSFileHandle> fileHandleForReadingAtPath(const NSString& path);

    /// A handle of a file that is open already.
    static std::unique_ptr<NSFileHandle> fileHandleWithReader(std::shared_ptr<const ByteReader> reader) {
        return std::unique_ptr<NSFileHandle>(new NSFileHandle(std::move(reader)));
    }

    /// `seekToFileOffset:`: the offset may be beyond the end of the file, where reading gives no bytes.
    void seekToFileOffset(std::uint64_t offset) { offset_ = offset; }
    /// `readDataOfLength:`: at most `length` bytes, fewer at the end of the file. Moves the offset to the end
    /// of these bytes.
    Bytes readDataOfLength(std::size_t length);
    /// `offsetInFile`.
    std::uint64_t offsetInFile() const { return offset_; }
    /// `closeFile`: from then on reading gives no bytes.
    void closeFile() { reader_.reset(); }

    /// What is read; null when closed.
    const std::shared_ptr<const ByteReader>& reader() const { return reader_; }

private:
    explicit NSFileHandle(std::shared_ptr<const ByteReader> reader) : reader_(std::move(reader)) {}

    std::shared_ptr<const ByteReader> reader_; ///< null when closed
    std::uint64_t offset_ = 0;
};

} // namespace kestrine
