// ItemTable: the items of a HEIF or AVIF file: pictures, parts of pictures, EXIF and other data.
#pragma once

#include "platform/imageio/heif/TopLevelBoxes.h"

#include <map>

namespace kestrine::heif {

using ItemID = std::uint32_t;

/// A property that belongs to an item.
struct ItemProperty {
    Box box;
    bool isEssential = false; ///< a reader that does not understand it must not show the item
};

struct Item {
    FourCC type = 0;
    bool isHidden = false;
    std::vector<FileRange> data;
    std::optional<Failure> unreadable;    ///< why its data cannot be read
    std::vector<ItemProperty> properties; ///< in the order in which they apply
};

/// References by their type: "`from` is a `type` of `to`", such as a thumbnail of a picture.
class ItemReferences {
public:
    /// Adds a reference. If two references have the same type and the same `from`, the first one counts.
    void add(FourCC type, ItemID from, const std::vector<ItemID>& to);

    /// What the reference of that type from `from` leads to; empty if there is none.
    const std::vector<ItemID>& targets(FourCC type, ItemID from) const { return list(targets_, type, from); }
    /// The items that have a reference of that type to `to`.
    const std::vector<ItemID>& sources(FourCC type, ItemID to) const { return list(sources_, type, to); }

private:
    using Lists = std::map<std::pair<FourCC, ItemID>, std::vector<ItemID>>;
    static const std::vector<ItemID>& list(const Lists& lists, FourCC type, ItemID id);

    Lists targets_, sources_;
};

struct ItemTable {
    ItemID primary = 0; ///< the main picture; 0 if the file names none
    std::map<ItemID, Item> items;
    ItemReferences references;

    const Item* item(ItemID id) const;
};

/// The items that `meta`, a box of a file of `fileBytes` bytes, describes. Their properties are views into
/// `meta`. Together the data of one item are not longer than the file.
Result<ItemTable> readItemTable(const LoadedBox& meta, std::uint64_t fileBytes);

} // namespace kestrine::heif
