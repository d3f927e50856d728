#include "platform/host/FailureCollector.h"

#include <gtest/gtest.h>

#include <thread>

namespace kestrine {
namespace {

TEST(FailureCollector, collectsTheFailuresNotedDuringItsLifetime) {
    noteFailure({Reason::noSpace, "before"});
    FailureCollector collector;
    noteFailure({Reason::notFound, "first"});
    noteFailure({Reason::malformed, "second"});
    ASSERT_EQ(collector.failures().size(), 2U);
    EXPECT_EQ(collector.failures()[0].text, "first");
    EXPECT_EQ(collector.failures()[1].reason, Reason::malformed);
}

TEST(FailureCollector, getsNoFailuresWhileAnInnerCollectorExists) {
    FailureCollector outer;
    {
        const FailureCollector inner;
        noteFailure({Reason::notFound, "inside"});
        EXPECT_EQ(inner.failures().size(), 1U);
    }
    noteFailure({Reason::notFound, "outside"});
    ASSERT_EQ(outer.failures().size(), 1U);
    EXPECT_EQ(outer.failures()[0].text, "outside");
}

TEST(FailureCollector, getsNoFailuresOfOtherThreads) {
    const FailureCollector collector;
    std::thread([] { noteFailure({Reason::notFound, "elsewhere"}); }).join();
    EXPECT_TRUE(collector.failures().empty());
}

} // namespace
} // namespace kestrine
