// StoredDirectory: a directory of a TIFF file that is being written, in little-endian order.
#pragma once

#include "platform/host/Bytes.h"

#include <cstdint>
#include <vector>

namespace kestrine::tiff {

/// One entry of a directory with its values as they are stored in the file.
struct StoredField {
    std::uint16_t tag, type;
    std::uint32_t count;
    Bytes values;

    bool fitsEntry() const { return values.size() <= 4; }
};

/// Sorted by tag.
using StoredDirectory = std::vector<StoredField>;

/// The length of the directory with the values that are too long for their entries.
std::uint64_t storedBytes(const StoredDirectory& directory);

/// Appends the directory and then the long values. Each of them begins at an even offset, if the file does so
/// now.
void appendDirectory(Bytes& file, const StoredDirectory& directory);

} // namespace kestrine::tiff
