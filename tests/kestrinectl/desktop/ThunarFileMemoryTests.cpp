// Reading Thunar's file when there is no memory.
// The global operator new is replaced, so that one allocation can fail.
#include "kestrinectl/desktop/ThunarFile.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <new>

namespace {

constexpr int never = -1;
/// The number of allocations of this thread that succeed before one fails.
thread_local int successesBeforeFailure = never;

} // namespace

[[gnu::noinline]] void* operator new(std::size_t size) {
    if (successesBeforeFailure != never && successesBeforeFailure-- == 0)
        throw std::bad_alloc(); // and what follows succeeds again
    if (void* memory = std::malloc(size == 0 ? 1 : size))
        return memory;
    throw std::bad_alloc();
}

[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace kestrine {
namespace {

/// Whether the content is read although the allocation after `successes` others fails.
bool isReadAfter(int successes, const std::string& content) {
    bool isRead = false;
    successesBeforeFailure = successes;
    try {
        isRead = parseThunarFile(content).ok();
    } catch (const std::bad_alloc&) {
        isRead = false;
    }
    successesBeforeFailure = never;
    return isRead;
}

TEST(ThunarFile, eachAllocationThatFailsEndsTheReading) {
    const std::string content = "<actions><action/><action><name>" + std::string(100, 'n')
                                + "</name><directories/></action></actions>";
    ASSERT_TRUE(parseThunarFile(content)); // which opens the library
    int failures = 0;
    while (!isReadAfter(failures, content))
        ++failures;
    EXPECT_GE(failures, 5); // two actions, a long text, two fields
}

} // namespace
} // namespace kestrine
