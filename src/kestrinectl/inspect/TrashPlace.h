// TrashPlace: where the originals of a folder go when they are replaced.
#pragma once

#include <string>

namespace kestrine {

/// A sentence for people. Creates nothing.
std::string trashPlaceOf(const std::string& folder);

} // namespace kestrine
