#include "platform/host/process/ProcessorCount.h"
#include "tests/support/IsolatedProcess.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <unistd.h>

namespace kestrine {
namespace {

TEST(ProcessorCount, isTheNumberOfProcessorsThatThisProcessMayUse) {
    testing::runIsolated([] {
        cpu_set_t all, first;
        ASSERT_EQ(::sched_getaffinity(0, sizeof all, &all), 0);
        EXPECT_EQ(processorCount(), CPU_COUNT(&all));
        int number = 0;
        while (!CPU_ISSET(number, &all))
            ++number;
        CPU_ZERO(&first);
        CPU_SET(number, &first);
        ASSERT_EQ(::sched_setaffinity(0, sizeof first, &first), 0);
        EXPECT_EQ(processorCount(), 1U);
    });
}

} // namespace
} // namespace kestrine
