// The system's list of users.
#pragma once

#include <optional>
#include <string>

namespace kestrine {

/// The home folder of the user with that name; absent when there is no such user.
std::optional<std::string> homeFolderOfUser(const std::string& name);

} // namespace kestrine
