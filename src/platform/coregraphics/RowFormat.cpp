#include "platform/coregraphics/RowFormat.h"

#include <atomic>

namespace kestrine {

namespace {

std::atomic<std::uint64_t> pixelLimit = defaultMaximumPixels;

} // namespace

std::uint64_t maximumPixels() { return pixelLimit; }

void setMaximumPixels(std::uint64_t pixels) { pixelLimit = pixels; }

} // namespace kestrine
