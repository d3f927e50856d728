#include "platform/host/process/PagedMemory.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

namespace kestrine {
namespace {

constexpr std::size_t mebibyte = std::size_t{1} << 20;

/// How many bytes of it are in memory.
std::size_t residentBytes(const PagedMemory& memory) {
    const auto pageBytes = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    std::vector<unsigned char> pages((memory.size() + pageBytes - 1) / pageBytes);
    EXPECT_EQ(::mincore(memory.data(), memory.size(), pages.data()), 0);
    return pageBytes
           * static_cast<std::size_t>(std::ranges::count_if(pages, [](auto page) { return page & 1; }));
}

TEST(PagedMemory, holdsZerosAtFirst) {
    const auto memory = PagedMemory::create(3 * mebibyte + 5);
    ASSERT_TRUE(memory.ok());
    EXPECT_EQ(memory->size(), 3 * mebibyte + 5);
    EXPECT_EQ(std::count(memory->data(), memory->data() + memory->size(), 0),
              static_cast<std::ptrdiff_t>(memory->size()));
}

TEST(PagedMemory, keepsWhatLiesAfterTheDiscardedBytes) {
    auto memory = PagedMemory::create(9 * mebibyte);
    ASSERT_TRUE(memory.ok());
    for (std::size_t at = 0; at < memory->size(); ++at)
        memory->data()[at] = static_cast<std::uint8_t>(at % 251);
    for (std::size_t end = 0; end <= memory->size(); end += 77777) {
        memory->discardBefore(end);
        for (std::size_t at = end; at < memory->size(); at += 4099)
            ASSERT_EQ(memory->data()[at], at % 251) << end;
    }
}

TEST(PagedMemory, costsOnlyWhatIsInUse) {
    constexpr std::size_t size = 256 * mebibyte, step = mebibyte;
    auto memory = PagedMemory::create(size);
    ASSERT_TRUE(memory.ok());
    std::size_t most = 0;
    for (std::size_t at = 0; at < size; at += step) {
        std::fill_n(memory->data() + at, step, 1);
        memory->discardBefore(at + step);
        most = std::max(most, residentBytes(*memory));
    }
    EXPECT_GE(most, step);
    EXPECT_LT(most, 16 * mebibyte);
}

TEST(PagedMemory, isRefusedIfThereIsTooLittle) {
    const auto memory = PagedMemory::create(std::size_t{1} << 62);
    ASSERT_FALSE(memory.ok());
    EXPECT_EQ(memory.failure().reason, Reason::outOfMemory);
}

} // namespace
} // namespace kestrine
