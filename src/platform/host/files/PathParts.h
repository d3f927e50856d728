// The parts of a path as bytes. Text only: nothing here looks at the disk.
#pragma once

#include "platform/host/Result.h"

#include <string>

namespace kestrine {

/// The folder that holds what `path` names: "/a/b.jpg" -> "/a", "/b.jpg" -> "/", "b.jpg" -> ".".
std::string folderOf(const std::string& path);

/// What follows the last slash: "/a/b.jpg" -> "b.jpg", "/a/" -> "".
std::string nameOf(const std::string& path);

/// `folder` and `name` with one slash between them.
std::string joinedPath(const std::string& folder, const std::string& name);

/// The name with `addition` before its extension: "a.jpg" and ".2" give "a.2.jpg". It has no more than
/// `longest` bytes: what stands before the addition is shortened, never in the middle of a UTF-8 character.
std::string nameWithAddition(const std::string& name, const std::string& addition, std::size_t longest);

/// Fails (malformed) for the texts that the system would silently take for another path: the empty one
/// and those with a zero byte.
Result<void> checkPath(const std::string& path);

} // namespace kestrine
