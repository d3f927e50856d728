// KeyValueObservers: the observers of one object's values.
#pragma once

#include "platform/foundation/text/NSString.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace kestrine {

/// A member of the observed object, for use on one thread.
class KeyValueObservers {
public:
    using Observer = std::function<void()>;
    using Token = std::uint64_t;

    /// `addObserver:forKeyPath:options:context:` for a plain key. The token is for remove().
    Token add(const NSString& key, Observer observer);

    /// `removeObserver:forKeyPath:`. The observer is not called again, even if notify() is running. An
    /// unknown token has no effect.
    void remove(Token token);

    /// Calls every observer of `key`, in the order in which they were added. Observers may add and remove
    /// observers. One that is added during the call is not called.
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
