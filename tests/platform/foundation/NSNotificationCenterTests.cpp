#include "platform/foundation/NSNotificationCenter.h"
#include "platform/foundation/NSNumber.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>

namespace kestrine {
namespace {

Object anObject() { return std::make_shared<NSNumber>(std::int32_t{1}); }

TEST(NSNotificationCenter, anObserverGetsNameObjectAndInfo) {
    NSNotificationCenter center;
    const Object object = anObject();
    const auto info = std::make_shared<NSDictionary>(std::map<NSString, Object>{{u"key", object}});
    std::vector<NSNotification> seen;
    center.addObserver(u"done", nullptr,
                       [&](const NSNotification& notification) { seen.push_back(notification); });
    center.postNotification(u"done", object, info);
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].name, NSString(u"done"));
    EXPECT_EQ(seen[0].object, object);
    EXPECT_EQ(seen[0].userInfo->objectForKey(u"key"), object);
}

TEST(NSNotificationCenter, anObserverIsCalledOnlyForItsName) {
    NSNotificationCenter center;
    int calls = 0;
    center.addObserver(u"done", nullptr, [&](const NSNotification&) { calls++; });
    center.postNotification(u"Done", nullptr, nullptr);
    center.postNotification(u"", nullptr, nullptr);
    EXPECT_EQ(calls, 0);
}

TEST(NSNotificationCenter, anObserverOfOneObjectIsNotCalledForOthers) {
    NSNotificationCenter center;
    const Object mine = anObject();
    int calls = 0;
    center.addObserver(u"done", mine, [&](const NSNotification&) { calls++; });
    center.postNotification(u"done", anObject(), nullptr);
    center.postNotification(u"done", nullptr, nullptr);
    EXPECT_EQ(calls, 0);
    center.postNotification(u"done", mine, nullptr);
    EXPECT_EQ(calls, 1);
}

TEST(NSNotificationCenter, observersAreCalledInTheirOrderBeforePostingReturns) {
    NSNotificationCenter center;
    std::string order;
    for (const char letter : {'a', 'b', 'c'})
        center.addObserver(u"done", nullptr, [&order, letter](const NSNotification&) { order += letter; });
    center.postNotification(u"done", nullptr, nullptr);
    EXPECT_EQ(order, "abc");
}

TEST(NSNotificationCenter, aRemovedObserverIsNotCalledAgain) {
    NSNotificationCenter center;
    int calls = 0;
    const auto token = center.addObserver(u"done", nullptr, [&](const NSNotification&) { calls++; });
    center.removeObserver(token);
    center.removeObserver(token);
    center.postNotification(u"done", nullptr, nullptr);
    EXPECT_EQ(calls, 0);
}

TEST(NSNotificationCenter, anObserverMayRemoveItselfAndOthersDuringACall) {
    NSNotificationCenter center;
    int first = 0;
    int second = 0;
    NSNotificationCenter::Token firstToken{};
    NSNotificationCenter::Token secondToken{};
    firstToken = center.addObserver(u"done", nullptr, [&](const NSNotification&) {
        first++;
        center.removeObserver(firstToken);
        center.removeObserver(secondToken);
    });
    secondToken = center.addObserver(u"done", nullptr, [&](const NSNotification&) { second++; });
    center.postNotification(u"done", nullptr, nullptr);
    center.postNotification(u"done", nullptr, nullptr);
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 0);
}

TEST(NSNotificationCenter, anObserverAddedDuringACallIsCalledTheNextTime) {
    NSNotificationCenter center;
    int calls = 0;
    const auto adding = center.addObserver(u"done", nullptr, [&](const NSNotification&) {
        center.addObserver(u"done", nullptr, [&](const NSNotification&) { calls++; });
    });
    center.postNotification(u"done", nullptr, nullptr);
    EXPECT_EQ(calls, 0);
    center.removeObserver(adding);
    center.postNotification(u"done", nullptr, nullptr);
    EXPECT_EQ(calls, 1);
}

TEST(NSNotificationCenter, severalThreadsMayPostAndObserve) {
    NSNotificationCenter center;
    std::atomic<int> calls = 0;
    center.addObserver(u"done", nullptr, [&](const NSNotification&) { calls++; });
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; i++)
        threads.emplace_back([&center] {
            for (int n = 0; n < 200; n++) {
                const auto token = center.addObserver(u"other", nullptr, [](const NSNotification&) {});
                center.postNotification(u"done", nullptr, nullptr);
                center.removeObserver(token);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(calls, 800);
}

TEST(NSNotificationCenter, theDefaultCenterIsAlwaysTheSame) {
    EXPECT_EQ(&NSNotificationCenter::defaultCenter(), &NSNotificationCenter::defaultCenter());
}

} // namespace
} // namespace kestrine
