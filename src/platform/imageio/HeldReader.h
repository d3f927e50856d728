// HeldReader: the reader that has read a file's header, held for the first rows that need it, so that the
// header is not read again.
#pragma once

#include <memory>
#include <mutex>

namespace kestrine {

/// Any thread.
template <class Reader>
class HeldReader {
public:
    void hold(std::unique_ptr<Reader> reader) {
        const std::lock_guard lock(mutex_);
        reader_ = std::move(reader);
    }

    /// The reader, for the first caller; null for all others.
    std::unique_ptr<Reader> take() {
        const std::lock_guard lock(mutex_);
        return std::move(reader_);
    }

private:
    std::mutex mutex_;
    std::unique_ptr<Reader> reader_; ///< guarded by mutex_
};

} // namespace kestrine
