#include "platform/foundation/KeyValueObserving.h"

#include <algorithm>

namespace kestrine {

KeyValueObservers::Token KeyValueObservers::add(const NSString& key, Observer observer) {
    entries_.push_back({++lastToken_, key, std::move(observer)});
    return lastToken_;
}

void KeyValueObservers::remove(Token token) {
    std::erase_if(entries_, [token](const Entry& entry) { return entry.token == token; });
}

void KeyValueObservers::notify(const NSString& key) {
    const std::vector<Entry> entries = entries_;
    for (const Entry& entry : entries)
        if (entry.key == key && has(entry.token))
            entry.observer();
}

bool KeyValueObservers::has(Token token) const {
    return std::any_of(entries_.begin(), entries_.end(),
                       [token](const Entry& entry) { return entry.token == token; });
}

} // namespace kestrine
