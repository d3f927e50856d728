// ByteSink: takes the bytes of a file in their order, wherever they go.
#pragma once

#include "platform/host/Bytes.h"
#include "platform/host/Result.h"

#include <utility>

namespace kestrine {

/// For one thread at a time.
class ByteSink {
public:
    virtual ~ByteSink() = default;

    /// Takes all of `bytes`, which follow those of the calls before. After a failure the sink is of no more
    /// use.
    virtual Result<void> write(ByteView bytes) = 0;
};

/// Keeps the bytes in memory.
class BytesSink final : public ByteSink {
public:
    Result<void> write(ByteView bytes) override {
        bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
        return {};
    }

    /// Everything that was written.
    Bytes take() { return std::move(bytes_); }

private:
    Bytes bytes_;
};

} // namespace kestrine
