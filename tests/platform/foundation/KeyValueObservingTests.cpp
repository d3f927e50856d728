#include "platform/foundation/KeyValueObserving.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

TEST(KeyValueObservers, theObserversOfAKeyAreCalledInTheirOrder) {
    KeyValueObservers observers;
    std::string order;
    observers.add(u"chooseFolder", [&] { order += 'a'; });
    observers.add(u"other", [&] { order += 'x'; });
    observers.add(u"chooseFolder", [&] { order += 'b'; });
    observers.notify(u"chooseFolder");
    EXPECT_EQ(order, "ab");
}

TEST(KeyValueObservers, aRemovedObserverIsNotCalledAgain) {
    KeyValueObservers observers;
    int calls = 0;
    const auto token = observers.add(u"key", [&] { calls++; });
    observers.notify(u"key");
    observers.remove(token);
    observers.remove(token);
    observers.notify(u"key");
    EXPECT_EQ(calls, 1);
}

TEST(KeyValueObservers, anObserverMayRemoveItselfAndOthersDuringACall) {
    KeyValueObservers observers;
    std::string order;
    KeyValueObservers::Token first{};
    KeyValueObservers::Token second{};
    first = observers.add(u"key", [&] {
        order += 'a';
        observers.remove(first);
        observers.remove(second);
    });
    second = observers.add(u"key", [&] { order += 'b'; });
    observers.notify(u"key");
    observers.notify(u"key");
    EXPECT_EQ(order, "a");
}

TEST(KeyValueObservers, anObserverAddedDuringACallIsCalledTheNextTime) {
    KeyValueObservers observers;
    int calls = 0;
    const auto adding = observers.add(u"key", [&] { observers.add(u"key", [&] { calls++; }); });
    observers.notify(u"key");
    EXPECT_EQ(calls, 0);
    observers.remove(adding);
    observers.notify(u"key");
    EXPECT_EQ(calls, 1);
}

} // namespace
} // namespace kestrine
