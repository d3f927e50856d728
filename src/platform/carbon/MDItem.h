// Spotlight's view of an item: the attributes that are kept about it.
#pragma once

#include "platform/foundation/text/NSString.h"

#include <memory>

namespace kestrine {

class MDItem {
public:
    explicit MDItem(std::string path) : path_(std::move(path)) {}

    /// Bytes.
    const std::string& path() const { return path_; }

private:
    const std::string path_;
};

/// Null is no item. Released with its last user.
using MDItemRef = std::shared_ptr<const MDItem>;

/// The attribute of the Finder's comment, a text.
inline constexpr const char16_t* kMDItemFinderComment = u"kMDItemFinderComment";

/// The item at `path`, following links; null for nil, for a path that cannot be encoded and when nothing is
/// there.
MDItemRef MDItemCreate(const OptionalString& path);

/// Nil for null, when the item does not have the attribute, and for a name other than the one above.
Object MDItemCopyAttribute(const MDItemRef& item, const NSString& name);

} // namespace kestrine
