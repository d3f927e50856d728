// Sizes in points, in single precision.
#pragma once

namespace kestrine {

struct NSSize {
    float width = 0;
    float height = 0;

    bool operator==(const NSSize&) const = default;
};

} // namespace kestrine
