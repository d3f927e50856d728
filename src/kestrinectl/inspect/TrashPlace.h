// TrashPlace: where the originals of a folder go when they are replaced.
#pragma once

#include <string>

namespace kestrine {

struct TrashPlace {
    bool isPossible = false;
    std::string text; ///< for people: where they go, or why they cannot
};

/// Creates nothing.
TrashPlace trashPlaceOf(const std::string& folder);

} // namespace kestrine
