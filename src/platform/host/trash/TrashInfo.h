// The texts of a trash: names of items in it, and the record that says where an item came from.
// After the freedesktop.org Trash specification 1.0.
#pragma once

#include <cstddef>
#include <ctime>
#include <string>
#include <string_view>

namespace kestrine {

/// The name that an item tries to get in the trash: the 1st attempt is its own name, then "a.2.jpg",
/// "a.3.jpg". No name has more than `longest` bytes.
std::string trashName(const std::string& original, unsigned attempt, std::size_t longest);

/// Bytes other than letters, digits, "/" and the marks that RFC 2396 leaves alone, as %XX.
std::string percentEncoded(std::string_view bytes);

/// The record of an item that was at `originalPath` and was deleted at `when`, told in local time.
std::string trashInfoText(const std::string& originalPath, std::time_t when);

} // namespace kestrine
