// Quoting: names and paths in the files that file managers read. Every function takes any string.
#pragma once

#include <optional>
#include <string>

namespace kestrine {

/// One word of a POSIX shell: in single quotation marks.
std::string shellWord(const std::string& text);

/// One argument in the Exec key of a desktop entry, quoted by its rules and escaped as a value of a key file.
std::string execArgument(const std::string& text);

/// The value of a key in a key file; spaces at the ends stay.
std::string keyFileValue(const std::string& text);

/// The name of a set as one word of letters, digits, ".", "_", "-" and "=XX" (a byte in hexadecimal digits),
/// which no file manager and no shell changes. It does not begin with "-".
std::string wordOfSetName(const std::string& name);

/// The inverse; nullopt for a word that wordOfSetName() does not return.
std::optional<std::string> setNameOfWord(const std::string& word);

/// Why menus cannot show a name: it is empty, not UTF-8, or has characters that are not printable. A clause
/// without full stop; nullopt for other names.
std::optional<std::string> objectionToLabel(const std::string& name);

} // namespace kestrine
