// Identifies an item independently of its name.
#pragma once

#include "platform/host/Result.h"

#include <cstdint>
#include <string>

namespace kestrine {

struct ItemIdentity {
    std::uint64_t device;
    std::uint64_t number; ///< the inode

    bool operator==(const ItemIdentity&) const = default;
};

/// `path` is absolute; a link at its end is not followed.
Result<ItemIdentity> identityOf(const std::string& path);

/// The name of the item in `folder` that has this identity; notFound when there is none.
Result<std::string> nameOfItem(const std::string& folder, const ItemIdentity& identity);

} // namespace kestrine
