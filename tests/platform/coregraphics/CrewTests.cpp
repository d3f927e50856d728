#include "platform/coregraphics/Crew.h"

#include "platform/coregraphics/SlotRing.h"

#include <future>
#include <gtest/gtest.h>

namespace kestrine {
namespace {

/// Hands over the numbers 0, 1, 2 ... up to `last`; or those of another ring, each plus 1.
class Numbers {
public:
    Numbers(std::shared_ptr<Crew> crew, int last, Numbers* input = nullptr) : ring_(std::move(crew)) {
        ring_.start([this, last, input](int& slot) {
            slot = input == nullptr ? number_ : input->next() + 1;
            return number_++ < last;
        });
    }
    int next() { return ring_.next(); }

private:
    int number_ = 0; ///< used by the thread that fills
    SlotRing<int, 4> ring_;
};

/// A task of one step, which takes until `mayEnd` is set.
class LongStep final : private Crew::Task {
public:
    explicit LongStep(Crew& crew) : crew_(crew), end_(mayEnd.get_future()) { crew_.add(*this); }
    ~LongStep() override { crew_.remove(*this); }

    std::promise<std::thread::id> worker;
    std::promise<void> mayEnd;
    bool hadCrew = true;

private:
    bool isReady() const override { return !hasBegun_; }
    std::size_t begin() override {
        hasBegun_ = true;
        return 0;
    }
    void work(std::size_t /*step*/) override {
        hadCrew = Crew::current() != nullptr;
        worker.set_value(std::this_thread::get_id());
        end_.wait();
    }
    void end(std::size_t /*step*/) override {}

    Crew& crew_;
    const std::future<void> end_;
    bool hasBegun_ = false;
};

TEST(Crew, helpersDoStepsWhileTheCallerDoesOtherThings) {
    Crew crew(2);
    LongStep task(crew);
    EXPECT_NE(task.worker.get_future().get(), std::this_thread::get_id());
    task.mayEnd.set_value();
}

TEST(Crew, waitsForTheStepOfATaskThatIsRemoved) {
    Crew crew(2);
    auto task = std::make_unique<LongStep>(crew);
    std::promise<void> mayEnd = std::move(task->mayEnd);
    task->worker.get_future().wait();
    const auto removed = std::async(std::launch::async, [&task] { task.reset(); });
    EXPECT_EQ(removed.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
    mayEnd.set_value();
    removed.wait();
}

TEST(Crew, theCallerDoesAllStepsIfThereIsNobodyElse) {
    const auto crew = std::make_shared<Crew>(1);
    Numbers numbers(crew, 20);
    for (int expected = 0; expected <= 20; ++expected)
        EXPECT_EQ(numbers.next(), expected);
}

TEST(Crew, tasksUseTheResultsOfEarlierTasksOnAnyNumberOfThreads) {
    for (const std::size_t threads : {1U, 2U, 3U, 8U})
        for (int repetition = 0; repetition < 50; ++repetition) {
            const auto crew = std::make_shared<Crew>(threads);
            Numbers first(crew, 100), second(crew, 100, &first), third(crew, 100, &second);
            for (int expected = 0; expected <= 100; ++expected)
                ASSERT_EQ(third.next(), expected + 2) << threads << " threads";
        }
}

TEST(Crew, tasksCanBeRemovedBeforeTheyAreOver) {
    for (int left = 0; left < 100; ++left) {
        const auto crew = std::make_shared<Crew>(3);
        Numbers first(crew, 100), second(crew, 100, &first);
        for (int i = 0; i < left; ++i)
            ASSERT_EQ(second.next(), i + 1);
    }
}

TEST(Crew, whoWaitsForATaskDoesStepsOfItsSiblings) {
    const auto crew = std::make_shared<Crew>(2);
    std::promise<void> firstBegins, secondIsDone;
    SlotRing<bool, 1> first(crew), second(crew);
    first.start([&](bool& hasWaited) { // on the thread of the helper
        firstBegins.set_value();
        constexpr std::chrono::seconds longEnough{20};
        hasWaited = secondIsDone.get_future().wait_for(longEnough) == std::future_status::ready;
        return false;
    });
    firstBegins.get_future().wait();
    second.start(
        [&](bool& isDone) {
            secondIsDone.set_value();
            isDone = true;
            return false;
        },
        true);
    EXPECT_TRUE(first.next());
    EXPECT_TRUE(second.next());
}

TEST(Crew, isTheCurrentOneInItsScopeAndNoneInSteps) {
    const auto crew = std::make_shared<Crew>(2);
    EXPECT_EQ(Crew::current(), nullptr);
    {
        const CrewScope scope(crew);
        EXPECT_EQ(Crew::current(), crew);
        const CrewScope inner(nullptr);
        EXPECT_EQ(Crew::current(), nullptr);
    }
    EXPECT_EQ(Crew::current(), nullptr);
    const CrewScope scope(crew);
    LongStep task(*crew);
    task.worker.get_future().wait();
    EXPECT_FALSE(task.hadCrew);
    task.mayEnd.set_value();
}

} // namespace
} // namespace kestrine
