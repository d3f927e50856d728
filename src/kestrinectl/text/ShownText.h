// ShownText: names and paths in output for people.
#pragma once

#include <string>
#include <string_view>

namespace kestrine {

/// What to print for a name or path. For a pipe or file: the bytes unchanged, so that scripts get real names.
/// For a terminal: escapes characters that could move the cursor, change colours or reverse the reading
/// direction ("\n", "\t", "\r", "\x1b", "\u202e"), and each byte that is not valid UTF-8. Other characters,
/// backslashes included, do not change.
std::string shownText(std::string_view bytes, bool isTerminal);

} // namespace kestrine
