#include "platform/host/process/MemoryBudget.h"

#include <future>
#include <gtest/gtest.h>
#include <vector>

namespace kestrine {
namespace {

using namespace std::chrono_literals;

bool isWaiting(const std::future<void>& job) { return job.wait_for(20ms) == std::future_status::timeout; }

class MemoryBudgetOf100 : public ::testing::Test {
protected:
    MemoryBudgetOf100() { budget_.setLimit(100); }

    /// A job that reserves `bytes`, adds them to order_ and ends.
    std::future<void> startJob(std::uint64_t bytes) {
        return std::async(std::launch::async, [this, bytes] {
            const Result<MemoryReservation> memory = budget_.reserve(bytes);
            const std::lock_guard lock(mutex_);
            order_.push_back(memory ? bytes : 0);
        });
    }

    MemoryBudget budget_{100};
    std::mutex mutex_;
    std::vector<std::uint64_t> order_;
};

TEST_F(MemoryBudgetOf100, whatFitsIsGrantedAndGivenBack) {
    for (int i = 0; i < 3; ++i) {
        const Result<MemoryReservation> first = budget_.reserve(60), second = budget_.reserve(40);
        EXPECT_TRUE(first.ok() && second.ok());
        EXPECT_FALSE(budget_.tryReserve(1).has_value());
    }
    EXPECT_TRUE(budget_.tryReserve(100).has_value());
}

TEST_F(MemoryBudgetOf100, whatWouldNotFitAloneIsRefusedAtOnce) {
    const Result<MemoryReservation> refused = budget_.reserve(101);
    ASSERT_FALSE(refused.ok());
    EXPECT_EQ(refused.failure().reason, Reason::tooLarge);
    EXPECT_TRUE(budget_.reserve(100).ok());
}

TEST_F(MemoryBudgetOf100, whatDoesNotFitBesideOthersWaitsForThem) {
    std::optional<MemoryReservation> other = budget_.tryReserve(50);
    const std::future<void> job = startJob(51);
    EXPECT_TRUE(isWaiting(job));
    other.reset();
    job.wait();
    EXPECT_EQ(order_, std::vector<std::uint64_t>{51});
}

TEST_F(MemoryBudgetOf100, aLargeOneIsNotOvertakenForEver) {
    std::optional<MemoryReservation> other = budget_.tryReserve(50);
    const std::future<void> large = startJob(90);
    EXPECT_TRUE(isWaiting(large));
    const std::future<void> small = startJob(20);
    EXPECT_TRUE(isWaiting(small));
    other.reset();
    small.wait();
    EXPECT_EQ(order_, (std::vector<std::uint64_t>{90, 20}));
}

TEST_F(MemoryBudgetOf100, manyJobsAllHaveTheirTurn) {
    std::vector<std::future<void>> jobs;
    for (std::uint64_t i = 0; i < 40; ++i)
        jobs.push_back(startJob(1 + i * 37 % 100));
    jobs.clear();
    EXPECT_EQ(order_.size(), 40U);
    EXPECT_TRUE(budget_.tryReserve(100).has_value());
}

TEST_F(MemoryBudgetOf100, aMovedReservationIsGivenBackOnce) {
    {
        MemoryReservation first = *budget_.tryReserve(70);
        MemoryReservation second = std::move(first);
        MemoryReservation third;
        third = std::move(second);
        EXPECT_FALSE(budget_.tryReserve(31).has_value());
    }
    EXPECT_TRUE(budget_.tryReserve(100).has_value());
    EXPECT_FALSE(budget_.tryReserve(101).has_value());
}

TEST_F(MemoryBudgetOf100, aRaisedLimitWakesThoseThatWait) {
    const std::optional<MemoryReservation> other = budget_.tryReserve(50);
    const std::future<void> job = startJob(60);
    EXPECT_TRUE(isWaiting(job));
    budget_.setLimit(110);
    job.wait();
}

TEST(MemoryBudget, withoutALimitAPartOfTheAvailableMemoryIsGranted) {
    MemoryBudget budget(50);
    EXPECT_TRUE(budget.reserve(MemoryBudget::smallestLimit).ok());
    EXPECT_FALSE(budget.reserve(std::uint64_t{1} << 60).ok());
    EXPECT_TRUE(budget.reserve(MemoryBudget::smallestLimit).ok());
}

} // namespace
} // namespace kestrine
