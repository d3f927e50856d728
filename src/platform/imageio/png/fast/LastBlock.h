// LastBlock: finds the last block of deflate data without decompressing them.
#pragma once

#include "platform/host/Bytes.h"

#include <optional>

namespace kestrine::png {

struct LastBlock {
    std::size_t begin, end; ///< in bits: its final flag, and after its last bit
};

/// Walks over the codes and their extra bits, as RFC 1951 describes them; neither bytes nor distances matter.
/// Nullopt if the data are not deflate blocks, or end before a final one.
std::optional<LastBlock> lastBlockOf(ByteView deflated);

} // namespace kestrine::png
