// ItemLocations: where the data of items lie (the box "iloc").
#pragma once

#include "platform/imageio/heif/ItemTable.h"

#include <functional>

namespace kestrine::heif {

class ItemLocations {
public:
    static Result<ItemLocations> read(ByteView iloc);

    /// What is needed to find the data of items.
    struct Surroundings {
        FileRange itemData; ///< the content of the box "idat"
        std::uint64_t fileBytes = 0;
        std::function<std::vector<ItemID>(ItemID)> dataItems; ///< the items whose data an item consists of
    };

    /// The data of an item as parts of the file; empty if the item has no location. Fails if they lie outside
    /// the file, or if they are longer than it.
    Result<std::vector<FileRange>> rangesOf(ItemID id, const Surroundings& surroundings);

private:
    struct Extent {
        std::uint64_t index = 0; ///< of the item that has the data, from 1
        std::uint64_t offset = 0;
        std::uint64_t length = 0; ///< 0: up to the end
    };
    struct Location {
        unsigned method = 0; ///< 0: offsets into the file, 1: into "idat", 2: into the data of other items
        bool isElsewhere = false; ///< in another file
        std::vector<Extent> extents;
    };

    Result<std::vector<FileRange>> ranges(ItemID id, const Surroundings& surroundings, int depth);
    Result<std::vector<FileRange>> source(const Location& location, const Extent& extent,
                                          const std::vector<ItemID>& dataItems,
                                          const Surroundings& surroundings, int depth);

    std::map<ItemID, Location> locations_;
    std::size_t steps_ = 0; ///< so far, to bound the work
};

} // namespace kestrine::heif
