// ShownText: names and paths in what a person reads.
#pragma once

#include <string>
#include <string_view>

namespace kestrine {

/// What to print for a name or path. For a pipe or file: the bytes themselves, so that scripts get real
/// names. For a terminal: what could move the cursor, change colours or reverse the reading direction is
/// escaped
/// ("\n", "\t", "\r", "\x1b", "\u202e"), as is each byte that is not valid UTF-8; other characters,
/// backslashes included, stay as they are.
std::string shownText(std::string_view bytes, bool isTerminal);

} // namespace kestrine
