// Limits for property lists from untrusted sources, to be checked before libplist parses them. libplist
// copies an object for each reference to it, frees recursively, and needs quadratic time in a few cases. A
// property list within these limits takes little time, stack and memory.
#pragma once

#include "platform/host/Bytes.h"
#include "platform/host/Result.h"

namespace kestrine {

inline constexpr std::size_t maxPropertyListSize = 16 * 1024 * 1024; ///< bytes
inline constexpr std::size_t maxPropertyListDepth = 512;             ///< nested arrays and dictionaries
inline constexpr std::size_t maxPropertyListObjects =
    1'000'000; ///< an object counts once for each reference to it

/// Whether `content` is in the binary form. Everything else is treated as XML.
bool isBinaryPropertyList(ByteView content);

/// Succeeds if the property list can be parsed safely; it may still be malformed. Fails with tooLarge above a
/// limit, with malformed, truncated or unsupported for content that cannot be checked, and with refused for
/// XML that declares entities.
Result<void> checkPropertyListBounds(ByteView content);

/// The checks for each form, for content of at most maxPropertyListSize bytes.
Result<void> checkBinaryPropertyListBounds(ByteView content);
Result<void> checkXMLPropertyListBounds(ByteView content);

} // namespace kestrine
