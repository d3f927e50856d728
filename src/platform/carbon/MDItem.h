// Spotlight attributes of an item.
#pragma once

#include "platform/foundation/text/NSString.h"

#include <memory>

namespace kestrine {

class MDItem {
public:
    explicit MDItem(std::string path) : path_(std::move(path)) {}

    /// A byte string.
    const std::string& path() const { return path_; }

private:
    const std::string path_;
};

/// Null is nil.
using MDItemRef = std::shared_ptr<const MDItem>;

/// The Finder comment, an NSString.
inline constexpr const char16_t* kMDItemFinderComment = u"kMDItemFinderComment";

/// The item at `path`; links are followed. Null when the path is nil or cannot be encoded, or nothing is
/// there.
MDItemRef MDItemCreate(const OptionalString& path);

/// Only kMDItemFinderComment is supported. Nil for other names, for a null item, and when there is no
/// comment.
Object MDItemCopyAttribute(const MDItemRef& item, const NSString& name);

} // namespace kestrine
