// TrashPlace: where the originals of a folder go when they are replaced.
#pragma once

#include <string>

namespace kestrine {

struct TrashPlace {
    bool isPossible = false;
    std::string text; ///< for messages: where originals go, or why the trash cannot take them
};

/// Creates nothing.
TrashPlace trashPlaceOf(const std::string& folder);

} // namespace kestrine
