// The ways to ask whether a path is in use.
#pragma once

#include <string>

namespace kestrine {

/// Whether something is there, following symbolic links: a dangling link is nothing.
bool itemExists(const std::string& path);

/// Whether there is a folder, following symbolic links.
bool folderExists(const std::string& path);

/// Whether it is certain that nothing is there; not when the system would not tell, for lack of rights say.
bool isAbsent(const std::string& path);

/// Whether the name is in use: by anything that exists, and by a dangling link too. A name that cannot be
/// asked for (no rights, too long) counts as free, so that a search for a free name ends.
bool isTaken(const std::string& path);

} // namespace kestrine
