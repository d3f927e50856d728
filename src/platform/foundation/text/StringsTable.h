// Strings tables: texts under keys, as `"key" = "value";` with comments, in UTF-8 or UTF-16.
#pragma once

#include "platform/foundation/text/NSString.h"
#include "platform/host/Bytes.h"
#include "platform/host/Result.h"

#include <map>

namespace kestrine {

using StringsTable = std::map<NSString, NSString>;

inline constexpr std::size_t largestStringsTable = 4 * 1024 * 1024; ///< bytes

/// Reads a whole table or nothing of it: malformed for bytes that are no table, truncated when it ends too
/// early, tooLarge beyond largestStringsTable. UTF-16 needs a byte-order mark. Of two values for a key the
/// later holds; a key alone (`key;`) is its own value. Words of letters, digits and _$./:- need no quotes.
Result<StringsTable> parseStringsTable(ByteView content);

} // namespace kestrine
