#include "platform/host/process/PagedMemory.h"

#include <sys/mman.h>
#include <unistd.h>
#include <utility>

namespace kestrine {

namespace {

/// The size of a large page on most processors, and a multiple of the usual page sizes. Memory is given back
/// in steps of this size, so that large pages need not be divided.
constexpr std::size_t largePageBytes = std::size_t{2} << 20;

} // namespace

Result<PagedMemory> PagedMemory::create(std::size_t bytes) {
    void* const memory =
        ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (memory == MAP_FAILED)
        return Failure{Reason::outOfMemory, "not enough memory"};
    // Fewer and larger pages cost less time to provide. Without them, it only takes longer.
    (void)::madvise(memory, bytes, MADV_HUGEPAGE);
    return PagedMemory(static_cast<std::uint8_t*>(memory), bytes);
}

PagedMemory::PagedMemory(PagedMemory&& other) noexcept
    : data_(std::exchange(other.data_, nullptr)), size_(std::exchange(other.size_, 0)),
      discarded_(std::exchange(other.discarded_, 0)) {}

PagedMemory& PagedMemory::operator=(PagedMemory&& other) noexcept {
    std::swap(data_, other.data_);
    std::swap(size_, other.size_);
    std::swap(discarded_, other.discarded_);
    return *this;
}

PagedMemory::~PagedMemory() {
    if (data_ != nullptr)
        ::munmap(data_, size_);
}

void PagedMemory::discardBefore(std::size_t end) {
    const auto start = reinterpret_cast<std::uintptr_t>(data_);
    const std::uintptr_t boundary = (start + end) / largePageBytes * largePageBytes;
    const std::size_t pages = boundary < start ? 0 : boundary - start;
    if (pages <= discarded_)
        return;
    // If this fails, the memory is only given back later.
    (void)::madvise(data_ + discarded_, pages - discarded_, MADV_DONTNEED);
    discarded_ = pages;
}

} // namespace kestrine
