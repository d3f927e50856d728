// Files inside files.
#pragma once

#include "platform/host/files/ByteReader.h"

namespace kestrine {

/// Reads the `length` bytes of `whole` from `offset` on, or fewer if it ends before.
std::shared_ptr<const ByteReader> readerOfPart(std::shared_ptr<const ByteReader> whole, std::uint64_t offset,
                                               std::uint64_t length);

/// Reads the bytes of `whole` from `offset` on.
std::shared_ptr<const ByteReader> readerFrom(std::shared_ptr<const ByteReader> whole, std::uint64_t offset);

} // namespace kestrine
