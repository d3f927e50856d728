// NSArray and NSDictionary: immutable collections. The keys of a dictionary are strings.
#pragma once

#include "platform/foundation/text/NSString.h"

#include <map>
#include <vector>

namespace kestrine {

class NSArray final : public NSObject {
public:
    explicit NSArray(std::vector<Object> elements = {}) : elements_(std::move(elements)) {}

    const std::vector<Object>& elements() const { return elements_; }
    std::size_t count() const { return elements_.size(); }

private:
    const std::vector<Object> elements_;
};

class NSDictionary final : public NSObject {
public:
    explicit NSDictionary(std::map<NSString, Object> entries = {}) : entries_(std::move(entries)) {}

    const std::map<NSString, Object>& entries() const { return entries_; }
    /// `objectForKey:`: nil if there is no entry.
    Object objectForKey(const NSString& key) const {
        const auto entry = entries_.find(key);
        return entry == entries_.end() ? nullptr : entry->second;
    }

private:
    const std::map<NSString, Object> entries_;
};

} // namespace kestrine
