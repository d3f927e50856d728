// The names and records of items in the trash, as defined by the freedesktop.org Trash specification 1.0.
#pragma once

#include <cstddef>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>

namespace kestrine {

/// The name to try for an item in the trash. Attempt 1 gives the original name, attempt 2 "a.2.jpg", and so
/// on. The name has at most `maxLength` bytes.
std::string trashName(const std::string& original, unsigned attempt, std::size_t maxLength);

/// Encodes each byte as %XX, except ASCII letters, digits and -_.!~*'()/+.
std::string percentEncoded(std::string_view bytes);

/// The record of an item that was at `originalPath` and was deleted at `when`. The record has the local time.
std::string trashInfoText(const std::string& originalPath, std::time_t when);

/// The original path in a record; nullopt if it has none.
std::optional<std::string> originalPathIn(std::string_view trashInfo);

} // namespace kestrine
