// Home folders from the system's user database.
#pragma once

#include <optional>
#include <string>

namespace kestrine {

/// The home folder of the user called `name`; empty if there is no such user.
std::optional<std::string> homeFolderOfUser(const std::string& name);

/// The home folder of the user who runs this process; empty if the database does not list that user.
std::optional<std::string> homeFolderOfCurrentUser();

} // namespace kestrine
