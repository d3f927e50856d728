// PagedMemory: a large block of memory that costs only the pages that are in use.
#pragma once

#include "platform/host/Result.h"

#include <cstddef>
#include <cstdint>

namespace kestrine {

/// Move-only. The bytes are 0 at first. The system provides a page when it is first written to, and takes it
/// back when it is discarded.
class PagedMemory {
public:
    /// Fails with reason "outOfMemory".
    static Result<PagedMemory> create(std::size_t bytes);

    PagedMemory(PagedMemory&& other) noexcept;
    PagedMemory& operator=(PagedMemory&& other) noexcept;
    ~PagedMemory();

    std::uint8_t* data() const { return data_; }
    std::size_t size() const { return size_; }

    /// Gives back the pages that lie wholly before `end`, which must not be read any more.
    void discardBefore(std::size_t end);

private:
    PagedMemory(std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

    std::uint8_t* data_ = nullptr;
    std::size_t size_ = 0;
    std::size_t discarded_ = 0; ///< so many bytes, in whole pages
};

} // namespace kestrine
