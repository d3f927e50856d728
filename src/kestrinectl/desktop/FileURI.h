// FileURI: the path in a URI "file:///...".
#pragma once

#include <optional>
#include <string>

namespace kestrine {

/// nullopt for a URI that is not that of a file on this computer, or is malformed.
std::optional<std::string> pathOfFileURI(const std::string& uri);

} // namespace kestrine
