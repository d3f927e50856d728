#include "platform/imageio/Plausibility.h"

namespace kestrine {

namespace {

constexpr std::uint64_t uncheckedBytes = std::uint64_t{1} << 28;
constexpr std::uint64_t maxBytesPerFileByte = 2048;

std::uint64_t packedBytes(const FrameDescription& frame) {
    const std::uint64_t bitsPerPixel =
        frame.storedBitsPerPixel > 0 ? frame.storedBitsPerPixel : 8 * frame.format.bytesPerPixel();
    return (frame.format.width * bitsPerPixel + 7) / 8 * frame.format.height;
}

} // namespace

bool isPlausible(std::uint64_t packedBytes, std::uint64_t fileBytes) {
    return packedBytes <= uncheckedBytes || packedBytes / maxBytesPerFileByte <= fileBytes;
}

Result<void> checkPlausible(const FrameDescription& frame, std::uint64_t fileBytes) {
    if (!isPlausible(packedBytes(frame), fileBytes))
        return Failure{Reason::implausible, "the file is too short for a picture of "
                                                + std::to_string(frame.format.width) + " x "
                                                + std::to_string(frame.format.height) + " pixels"};
    return {};
}

bool isWorthKeeping(const RowFormat& pixels, std::uint64_t fileBytes) {
    constexpr std::uint64_t alwaysKeptBytes = std::uint64_t{1} << 27;
    constexpr std::uint64_t maxKeptBytesPerFileByte = 128; // photographs have about 10
    return pixels.bytes() <= alwaysKeptBytes || pixels.bytes() / maxKeptBytesPerFileByte <= fileBytes;
}

} // namespace kestrine
