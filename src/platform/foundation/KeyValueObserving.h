// KeyValueObservers: who wants to know when a value of one object changes through key-value coding.
#pragma once

#include "platform/foundation/text/NSString.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace kestrine {

/// Belongs to the object it is about and is used on its thread.
class KeyValueObservers {
public:
    using Observer = std::function<void()>;
    using Token = std::uint64_t;

    /// `addObserver:forKeyPath:options:context:` for a plain key. The token removes it again.
    Token add(const NSString& key, Observer observer);

    /// An observer that is removed is not called any more, even when others are just being called.
    void remove(Token token);

    /// Calls every observer of `key`, in the order in which they came. They may add and remove observers;
    /// one that is added meanwhile is not called.
    void notify(const NSString& key);

private:
    struct Entry {
        Token token;
        NSString key;
        Observer observer;
    };

    bool has(Token token) const;

    std::vector<Entry> entries_;
    Token lastToken_ = 0;
};

} // namespace kestrine
