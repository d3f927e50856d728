// The guard before libplist: what a property list of foreign origin may be like at most. libplist copies
// an object each time it is referred to, frees recursively and has a few quadratic corners; whatever
// passes here costs it little time, stack and memory.
#pragma once

#include "platform/host/Bytes.h"
#include "platform/host/Result.h"

namespace kestrine {

inline constexpr std::size_t largestPropertyList = 16 * 1024 * 1024; ///< bytes
inline constexpr std::size_t deepestPropertyList = 512;           ///< arrays and dictionaries in one another
inline constexpr std::size_t mostPropertyListObjects = 1'000'000; ///< each counted as often as it is reached

/// Whether `content` looks like the binary form; all else is taken for XML.
bool isBinaryPropertyList(ByteView content);

/// Succeeds when the property list may be parsed; it may still turn out to be malformed. tooLarge for one
/// beyond a bound, malformed for one that cannot be followed, refused for one that declares entities.
Result<void> checkPropertyListBounds(ByteView content);

/// The two halves of it, for content of either form that is no longer than largestPropertyList.
Result<void> checkBinaryPropertyListBounds(ByteView content);
Result<void> checkXMLPropertyListBounds(ByteView content);

} // namespace kestrine
