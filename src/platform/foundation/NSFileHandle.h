// NSFileHandle: reading one file from wherever one likes.
#pragma once

#include "platform/foundation/text/NSString.h"
#include "platform/host/files/ByteReader.h"

#include <memory>

namespace kestrine {

/// For one thread at a time. The file stays open until closeFile() or the end of the handle.
class NSFileHandle {
public:
    /// `fileHandleForReadingAtPath:`: null (nil) when there is no regular file that can be opened.
    static std::unique_ptr<NSFileHandle> fileHandleForReadingAtPath(const NSString& path);

    /// `seekToFileOffset:`: any offset may be asked for; beyond the end there is nothing to read.
    void seekToFileOffset(std::uint64_t offset) { offset_ = offset; }
    /// `readDataOfLength:`: as many bytes as there are, up to `length`, and moves behind them.
    Bytes readDataOfLength(std::size_t length);
    /// `offsetInFile`.
    std::uint64_t offsetInFile() const { return offset_; }
    /// `closeFile`: from then on there is nothing to read.
    void closeFile() { reader_.reset(); }

private:
    explicit NSFileHandle(std::shared_ptr<const ByteReader> reader) : reader_(std::move(reader)) {}

    std::shared_ptr<const ByteReader> reader_; ///< null when closed
    std::uint64_t offset_ = 0;
};

} // namespace kestrine
