// What stays the same when an item is renamed.
#pragma once

#include "platform/host/Result.h"

#include <cstdint>
#include <string>

namespace kestrine {

struct ItemIdentity {
    std::uint64_t device;
    std::uint64_t number; ///< the file system's number of the item

    bool operator==(const ItemIdentity&) const = default;
};

/// `path` is absolute; links are not followed.
Result<ItemIdentity> identityOf(const std::string& path);

/// The name of the item in `folder` that has this identity.
Result<std::string> nameOfItem(const std::string& folder, const ItemIdentity& identity);

} // namespace kestrine
