// Sizes and rectangles in points, in single precision as the platform's are.
#pragma once

namespace kestrine {

struct NSSize {
    float width = 0;
    float height = 0;

    bool operator==(const NSSize&) const = default;
};

} // namespace kestrine
