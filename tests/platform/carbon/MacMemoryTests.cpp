#include "platform/carbon/MacMemory.h"

#include <gtest/gtest.h>
#include <limits>

namespace kestrine {
namespace {

/// Memory is refused for as long as it lives.
struct RefusedMemory {
    explicit RefusedMemory(OSErr error) { refuseMemory(error); }
    ~RefusedMemory() { refuseMemory(std::nullopt); }
};

TEST(MacMemory, aBlockKnowsItsSizeAndBeginsWithZeros) {
    for (const Size size : {0, 1, 1000}) {
        const Ptr block = NewPtr(size);
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(MemError(), noErr);
        EXPECT_EQ(GetPtrSize(block), size);
        for (Size i = 0; i < size; i++)
            EXPECT_EQ(block[i], 0);
        DisposePtr(block);
    }
}

TEST(MacMemory, impossibleSizesAreRefused) {
    for (const Size size : {Size{-1}, std::numeric_limits<Size>::max(), std::numeric_limits<Size>::min()}) {
        EXPECT_EQ(NewPtr(size), nullptr) << size;
        EXPECT_EQ(MemError(), memFullErr);
        EXPECT_EQ(NewHandle(size), nullptr) << size;
    }
}

TEST(MacMemory, aRefusalLeavesTheNumberAskedFor) {
    const RefusedMemory refused(-117);
    EXPECT_EQ(NewPtr(1), nullptr);
    EXPECT_EQ(MemError(), -117);
    EXPECT_EQ(NewHandle(1), nullptr);
}

TEST(MacMemory, lockingAHandleShowsInItsStateUntilThatIsRestored) {
    const Handle handle = NewHandle(3);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(GetHandleSize(handle), 3);
    const std::int8_t before = HGetState(handle);
    EXPECT_EQ(before & 0x80, 0);
    HLock(handle);
    EXPECT_EQ(HGetState(handle) & 0x80, 0x80);
    HSetState(handle, before);
    EXPECT_EQ(HGetState(handle), before);
    DisposeHandle(handle);
}

TEST(MacMemory, nothingHappensToNull) {
    DisposePtr(nullptr);
    EXPECT_EQ(GetPtrSize(nullptr), 0);
    EXPECT_EQ(MemError(), noErr);
    DisposeHandle(nullptr);
    EXPECT_EQ(MemError(), nilHandleErr);
    HLock(nullptr);
    HSetState(nullptr, 1);
    EXPECT_EQ(HGetState(nullptr), 0);
    EXPECT_EQ(GetHandleSize(nullptr), 0);
    EXPECT_EQ(MemError(), nilHandleErr);
}

} // namespace
} // namespace kestrine
