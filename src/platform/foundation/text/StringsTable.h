// Strings tables: files with lines of the form `"key" = "value";` and comments, in UTF-8 or UTF-16.
#pragma once

#include "platform/foundation/text/NSString.h"
#include "platform/host/Bytes.h"
#include "platform/host/Result.h"

#include <map>

namespace kestrine {

using StringsTable = std::map<NSString, NSString>;

inline constexpr std::size_t maxStringsTable = 4 * 1024 * 1024; ///< bytes

/// Parses a table. Fails with malformed for an entry of wrong form, with truncated for an incomplete table,
/// and with tooLarge above maxStringsTable. UTF-16 needs a byte-order mark. If a key occurs twice, the last
/// value counts. A key without a value (`key;`) is its own value. Words of letters, digits and _$./:- need no
/// quotes.
Result<StringsTable> parseStringsTable(ByteView content);

} // namespace kestrine
