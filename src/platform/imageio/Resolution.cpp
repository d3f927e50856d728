#include "platform/imageio/Resolution.h"

namespace kestrine {

namespace {

constexpr double lowestResolution = 1, highestResolution = 100'000;

/// Not-a-number also counts as outside.
double plausible(double pixelsPerInch) {
    return pixelsPerInch >= lowestResolution && pixelsPerInch <= highestResolution ? pixelsPerInch
                                                                                   : Resolution{}.horizontal;
}

} // namespace

Resolution plausibleResolution(double horizontal, double vertical) {
    return {plausible(horizontal), plausible(vertical)};
}

} // namespace kestrine
