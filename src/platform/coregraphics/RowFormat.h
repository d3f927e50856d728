// RowFormat: the size of a picture and the layout of its rows in memory.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kestrine {

enum class ColorModel : std::uint8_t { gray = 1, rgb = 3 };
enum class SampleDepth : std::uint8_t { bits8 = 1, bits16 = 2 };

/// The largest side of a source or result, in pixels.
inline constexpr std::uint32_t maximumSide = 1'000'000;
inline constexpr std::uint64_t defaultMaximumPixels = std::uint64_t{1} << 30;
/// How many pixels a source or result may have. Larger ones are refused. Any thread.
std::uint64_t maximumPixels();
/// Changes the limit for the whole process. Pictures that are already open are not checked again. Any thread.
void setMaximumPixels(std::uint64_t pixels);
/// The largest picture that may be held in memory, for a rotation or because its format requires it.
inline constexpr std::uint64_t maximumBufferedBytes = std::uint64_t{2} << 30;

/// Rows run from top to bottom and pixels from left to right. The samples of a pixel are adjacent: grey, or
/// red, green and blue, then alpha if there is one. Colour is not multiplied by alpha. 16-bit samples have
/// the machine's byte order.
struct RowFormat {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    ColorModel model = ColorModel::rgb;
    bool hasAlpha = false;
    SampleDepth depth = SampleDepth::bits8;

    std::size_t colorChannels() const { return static_cast<std::size_t>(model); }
    std::size_t channels() const { return colorChannels() + (hasAlpha ? 1 : 0); }
    std::size_t bytesPerSample() const { return static_cast<std::size_t>(depth); }
    std::size_t bytesPerPixel() const { return channels() * bytesPerSample(); }
    std::size_t samplesPerRow() const { return channels() * width; }
    std::size_t bytesPerRow() const { return bytesPerPixel() * width; }
    std::uint64_t pixels() const { return std::uint64_t{width} * height; }
    std::uint64_t bytes() const { return pixels() * bytesPerPixel(); }
    bool canBeBuffered() const { return bytes() <= maximumBufferedBytes; }

    /// Whether pictures of this size are supported.
    bool isWithinLimits() const {
        return width >= 1 && height >= 1 && width <= maximumSide && height <= maximumSide
               && pixels() <= maximumPixels();
    }

    bool operator==(const RowFormat&) const = default;
};

} // namespace kestrine
