// NSNotificationCenter: tells whoever asked that something has happened.
#pragma once

#include "platform/foundation/NSCollections.h"

#include <functional>
#include <map>
#include <mutex>

namespace kestrine {

struct NSNotification {
    NSString name;
    Object object;                                ///< who posted it; may be nil
    std::shared_ptr<const NSDictionary> userInfo; ///< may be null (nil)
};

/// Observers are called one after another, in the order in which they came, on the thread that posts. They
/// may add and remove observers, themselves included, while they are called. Safe to use from several
/// threads.
class NSNotificationCenter {
public:
    using Observer = std::function<void(const NSNotification&)>;
    using Token = std::uint64_t;

    /// `defaultCenter`.
    static NSNotificationCenter& defaultCenter();

    /// `addObserver:selector:name:object:`: only notifications of this name and, unless `object` is nil, from
    /// this very object. The token removes the observer again.
    Token addObserver(const NSString& name, const Object& object, Observer observer);
    void removeObserver(Token token);

    /// `postNotificationName:object:userInfo:`: returns after every observer has been called.
    void postNotification(const NSString& name, const Object& object,
                          std::shared_ptr<const NSDictionary> userInfo);

private:
    struct Entry {
        NSString name;
        Object object;
        Observer observer;
    };
    /// Nothing when the observer is gone or does not want this one.
    Observer observerFor(Token token, const NSNotification& notification) const;

    mutable std::mutex mutex_;
    std::map<Token, Entry> entries_;
    Token lastToken_ = 0;
};

} // namespace kestrine
