// FileSink: a ByteSink that writes into an open file.
#pragma once

#include "platform/host/ByteSink.h"

namespace kestrine {

/// Writes from the start of the file on. The position of the descriptor is not used.
class FileSink final : public ByteSink {
public:
    /// `file` is open for writing, empty, and stays open as long as this object is used.
    explicit FileSink(int file) : file_(file) {}

    Result<void> write(ByteView bytes) override;

private:
    const int file_;
    std::uint64_t offset_ = 0;
};

} // namespace kestrine
