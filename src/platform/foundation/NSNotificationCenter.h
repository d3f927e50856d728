// NSNotificationCenter: delivers notifications to observers.
#pragma once

#include "platform/foundation/NSCollections.h"

#include <functional>
#include <map>
#include <mutex>

namespace kestrine {

struct NSNotification {
    NSString name;
    Object object;                                ///< the sender; may be nil
    std::shared_ptr<const NSDictionary> userInfo; ///< may be null (nil)
};

/// Observers are called in the order in which they were added, on the thread that posts. During a call they
/// may add and remove observers, also themselves. Safe to use from several threads.
class NSNotificationCenter {
public:
    using Observer = std::function<void(const NSNotification&)>;
    using Token = std::uint64_t;

    /// `defaultCenter`.
    static NSNotificationCenter& defaultCenter();

    /// `addObserver:selector:name:object:`: for notifications with this name and, unless `object` is nil,
    /// from this object. The token is for removeObserver().
    Token addObserver(const NSString& name, const Object& object, Observer observer);
    void removeObserver(Token token);

    /// `postNotificationName:object:userInfo:`: calls all matching observers before it returns.
    void postNotification(const NSString& name, const Object& object,
                          std::shared_ptr<const NSDictionary> userInfo);

private:
    struct Entry {
        NSString name;
        Object object;
        Observer observer;
    };
    /// Empty if the observer was removed or does not match the notification.
    Observer observerFor(Token token, const NSNotification& notification) const;

    mutable std::mutex mutex_;
    std::map<Token, Entry> entries_;
    Token lastToken_ = 0;
};

} // namespace kestrine
