#include "kestrinectl/convert/ForEachPosition.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <vector>

namespace kestrine {
namespace {

TEST(ForEachPosition, callsTheWorkOnceForEachOnAnyNumberOfThreads) {
    for (const std::size_t threads : {0U, 1U, 3U, 50U}) {
        std::vector<std::atomic<int>> calls(20);
        forEachPosition(calls.size(), threads, [&](std::size_t position) { ++calls[position]; });
        for (const std::atomic<int>& count : calls)
            EXPECT_EQ(count, 1) << threads << " threads";
    }
}

TEST(ForEachPosition, isInOrderOnOneThread) {
    std::vector<std::size_t> order;
    forEachPosition(4, 1, [&](std::size_t position) { order.push_back(position); });
    EXPECT_EQ(order, (std::vector<std::size_t>{0, 1, 2, 3}));
}

TEST(ForEachPosition, handsAnExceptionOver) {
    for (const std::size_t threads : {1U, 3U})
        EXPECT_THROW(forEachPosition(9, threads, [](std::size_t) { throw std::runtime_error("on purpose"); }),
                     std::runtime_error);
}

TEST(ForEachPosition, ofNothingDoesNothing) {
    forEachPosition(0, 3, [](std::size_t) { FAIL(); });
}

} // namespace
} // namespace kestrine
