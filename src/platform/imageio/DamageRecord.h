// DamageRecord: why decoders had to invent pixels of a file that is cut off or damaged.
#pragma once

#include "platform/host/Result.h"

#include <mutex>
#include <optional>

namespace kestrine {

/// Keeps the first damage that is noted. Any thread.
class DamageRecord {
public:
    void note(Failure damage) {
        const std::lock_guard lock(mutex_);
        if (!first_)
            first_ = std::move(damage);
    }

    /// nullopt if no damage has been noted.
    std::optional<Failure> first() const {
        const std::lock_guard lock(mutex_);
        return first_;
    }

private:
    mutable std::mutex mutex_;
    std::optional<Failure> first_; ///< guarded by mutex_
};

} // namespace kestrine
