#include "platform/host/process/PagedMemory.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>

namespace kestrine {
namespace {

constexpr std::size_t mebibyte = std::size_t{1} << 20;

/// Of this process, in bytes.
std::size_t residentMemory() {
    constexpr std::size_t usualPageBytes = 4096;
    std::ifstream counts("/proc/self/statm");
    std::size_t all = 0, resident = 0;
    counts >> all >> resident;
    return resident * usualPageBytes;
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
    const std::size_t before = residentMemory();
    std::size_t most = 0;
    for (std::size_t at = 0; at < size; at += step) {
        std::fill_n(memory->data() + at, step, 1);
        memory->discardBefore(at + step);
        most = std::max(most, residentMemory());
    }
    EXPECT_LT(most, before + 16 * mebibyte);
}

TEST(PagedMemory, isRefusedIfThereIsTooLittle) {
    const auto memory = PagedMemory::create(std::size_t{1} << 62);
    ASSERT_FALSE(memory.ok());
    EXPECT_EQ(memory.failure().reason, Reason::outOfMemory);
}

} // namespace
} // namespace kestrine
