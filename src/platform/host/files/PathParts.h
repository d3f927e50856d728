// Operations on path strings. None of them accesses the file system.
#pragma once

#include "platform/host/Result.h"

#include <string>

namespace kestrine {

/// The folder part of `path`: "/a/b.jpg" -> "/a", "/b.jpg" -> "/", "b.jpg" -> ".".
std::string folderOf(const std::string& path);

/// The part after the last slash: "/a/b.jpg" -> "b.jpg", "/a/" -> "".
std::string nameOf(const std::string& path);

/// `folder` and `name`, joined by one slash.
std::string joinedPath(const std::string& folder, const std::string& name);

/// The name with `addition` before its extension: "a.jpg" and ".2" give "a.2.jpg". The part before the
/// addition is shortened, between UTF-8 characters, so that the result has at most `maxLength` bytes.
std::string nameWithAddition(const std::string& name, const std::string& addition, std::size_t maxLength);

/// Fails with malformed for an empty path and for a path with a zero byte, which the system would cut there.
Result<void> checkPath(const std::string& path);

} // namespace kestrine
