// Reads QOI files row by row.

#include "platform/host/BigEndian.h"
#include "platform/imageio/Codecs.h"
#include "platform/imageio/ForwardReader.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace kestrine::qoi {

namespace {

constexpr std::size_t headerLength = 14;

Failure endedEarly() { return {Reason::truncated, "the QOI file ends before its last row"}; }

struct Pixel {
    std::uint8_t red = 0, green = 0, blue = 0, alpha = 0;

    /// The place of the pixel in the table of recent pixels.
    std::size_t place() const { return (3u * red + 5u * green + 7u * blue + 11u * alpha) % 64; }
};

class Rows final : public RowSource {
public:
    Rows(std::shared_ptr<const ByteReader> reader, const RowFormat& format)
        : RowSource(format), input_(std::move(reader), headerLength, bufferBytes) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        for (auto to = row.begin(); to != row.end();) {
            if (left_ == 0)
                TRY(readChunk());
            --left_;
            *to++ = pixel_.red;
            *to++ = pixel_.green;
            *to++ = pixel_.blue;
            if (format().hasAlpha)
                *to++ = pixel_.alpha;
        }
        return {};
    }

private:
    static constexpr std::size_t bufferBytes = std::size_t{64} << 10;

    enum Chunk : int { index = 0x00, difference = 0x40, luma = 0x80, run = 0xC0, rgb = 0xFE, rgba = 0xFF };

    /// Sets `pixel_` and the number of pixels that have this colour.
    Result<void> readChunk() {
        const int chunk = input_.next();
        if (chunk < 0)
            return endedEarly();
        const int kind = chunk >= rgb ? chunk : chunk & 0xC0, value = chunk & 0x3F;
        left_ = 1;
        if (kind == rgb || kind == rgba)
            TRY(readColor(kind == rgba));
        else if (kind == index)
            pixel_ = recent_[static_cast<std::size_t>(value)];
        else if (kind == difference)
            add((value >> 4) - 2, (value >> 2 & 3) - 2, (value & 3) - 2);
        else if (kind == luma)
            TRY(addLuma(value - 32));
        else
            left_ = value + 1;
        recent_[pixel_.place()] = pixel_;
        return {};
    }

    Result<void> readColor(bool withAlpha) {
        std::array<std::uint8_t, 4> bytes{};
        const auto stored = std::span(bytes).first(withAlpha ? 4 : 3);
        if (input_.read(stored) != stored.size())
            return endedEarly();
        pixel_ = {bytes[0], bytes[1], bytes[2], withAlpha ? bytes[3] : pixel_.alpha};
        return {};
    }

    /// The differences of red and blue are given as compared with that of green.
    Result<void> addLuma(int green) {
        const int others = input_.next();
        if (others < 0)
            return endedEarly();
        add(green + (others >> 4) - 8, green, green + (others & 15) - 8);
        return {};
    }

    /// Sums wrap around.
    void add(int red, int green, int blue) {
        pixel_.red = static_cast<std::uint8_t>(pixel_.red + red);
        pixel_.green = static_cast<std::uint8_t>(pixel_.green + green);
        pixel_.blue = static_cast<std::uint8_t>(pixel_.blue + blue);
    }

    ForwardReader input_;
    Pixel pixel_{0, 0, 0, 255};
    std::array<Pixel, 64> recent_{};
    int left_ = 0;
};

class Decoder final : public ImageDecoder {
public:
    Decoder(std::shared_ptr<const ByteReader> reader, const RowFormat& format, bool isLinear)
        : reader_(std::move(reader)) {
        frames_.push_back({.format = format, .profile = isLinear ? linearProfile() : std::nullopt});
    }

    Result<RowSourcePointer> rows(std::size_t, int) const override {
        return RowSourcePointer(std::make_unique<Rows>(reader_, frames_.front().format));
    }

private:
    static std::optional<ColorProfile> linearProfile() {
        return ColorProfile::fromGamma(1, sRGBChromaticities, ColorModel::rgb);
    }

    const std::shared_ptr<const ByteReader> reader_;
};

bool recognises(ByteView head) {
    constexpr std::string_view signature = "qoif";
    return head.size() >= signature.size() && std::equal(signature.begin(), signature.end(), head.begin());
}

Result<std::unique_ptr<ImageDecoder>> open(std::shared_ptr<const ByteReader> reader) {
    std::array<std::uint8_t, headerLength> header{};
    if (reader->readAt(0, header) != header.size())
        return Failure{Reason::truncated, "the QOI file ends in its header"};
    const auto side = [&](std::size_t at) {
        return static_cast<std::uint32_t>(bigEndian(ByteView(header).subspan(at, 4)));
    };
    const unsigned channels = header[12], colorSpace = header[13];
    if ((channels != 3 && channels != 4) || colorSpace > 1)
        return Failure{Reason::malformed, "the header of the QOI file is invalid"};
    const RowFormat format = {side(4), side(8), ColorModel::rgb, channels == 4};
    if (format.pixels() == 0)
        return Failure{Reason::empty, "the QOI has no pixels"};
    if (!format.isWithinLimits())
        return Failure{Reason::tooLarge, "the QOI picture has too many pixels"};
    return std::unique_ptr<ImageDecoder>(
        std::make_unique<Decoder>(std::move(reader), format, colorSpace == 1));
}

} // namespace

const ImageCodec codec = {"QOI", recognises, open};

} // namespace kestrine::qoi
