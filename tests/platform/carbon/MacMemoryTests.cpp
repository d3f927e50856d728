#include "platform/carbon/MacMemory.h"
#include "platform/carbon/MemoryRefusal.h"

#include <gtest/gtest.h>
#include <limits>

namespace kestrine {
namespace {

/// Refuses memory for the lifetime of the object.
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

TEST(MacMemory, aRefusalReportsTheGivenNumber) {
    const RefusedMemory refused(-117);
    EXPECT_EQ(NewPtr(1), nullptr);
    EXPECT_EQ(MemError(), -117);
    EXPECT_EQ(NewHandle(1), nullptr);
}

TEST(MacMemory, lockingSetsABitOfTheStateWhichCanBeRestored) {
    const Handle handle = NewHandle(3);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(GetHandleSize(handle), 3);
    EXPECT_EQ(HGetState(handle), 0);
    HSetState(handle, 1);
    HLock(handle);
    EXPECT_EQ(static_cast<std::uint8_t>(HGetState(handle)), 0x81);
    HSetState(handle, 1);
    EXPECT_EQ(HGetState(handle), 1);
    DisposeHandle(handle);
}

TEST(MacMemory, everySuccessfulCallClearsTheError) {
    const Ptr block = NewPtr(3);
    const auto fail = [] { (void)NewPtr(-1); };
    fail();
    EXPECT_EQ(GetPtrSize(block), 3);
    EXPECT_EQ(MemError(), noErr);
    fail();
    DisposePtr(block);
    EXPECT_EQ(MemError(), noErr);
}

TEST(MacMemory, nullIsIgnored) {
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
