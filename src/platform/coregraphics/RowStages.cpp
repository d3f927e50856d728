#include "platform/coregraphics/RowStages.h"

#include "platform/coregraphics/PixelBuffer.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace kestrine {

namespace {

RowFormat withoutAlpha(RowFormat format) {
    format.hasAlpha = false;
    return format;
}

RowFormat withAlpha(RowFormat format) {
    format.hasAlpha = true;
    return format;
}

RowFormat with8Bits(RowFormat format) {
    format.depth = SampleDepth::bits8;
    return format;
}

RowFormat turned(RowFormat format, int quarterTurns) {
    if (quarterTurns % 2 != 0)
        std::swap(format.width, format.height);
    return format;
}

/// colour * alpha + white * (1 - alpha), rounded, in the stored encoding as drawing does it.
template <class Sample>
void flattenRow(const Sample* from, Sample* to, std::size_t pixels, std::size_t colors) {
    constexpr std::uint64_t full = static_cast<Sample>(~Sample{0});
    for (; pixels > 0; --pixels, from += colors + 1, to += colors)
        for (std::size_t c = 0; c < colors; ++c)
            to[c] = static_cast<Sample>(
                (from[c] * std::uint64_t{from[colors]} + full * (full - from[colors]) + full / 2) / full);
}

class RowsOnWhite final : public RowSource {
public:
    explicit RowsOnWhite(RowSourcePointer input)
        : RowSource(withoutAlpha(input->format())), input_(std::move(input)),
          row_(input_->format().bytesPerRow()) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        if (Result<void> read = input_->readRow(row_); !read)
            return read;
        const std::size_t colors = format().channels();
        if (format().depth == SampleDepth::bits8)
            flattenRow(row_.data(), row.data(), format().width, colors);
        else
            flattenRow(reinterpret_cast<const std::uint16_t*>(row_.data()),
                       reinterpret_cast<std::uint16_t*>(row.data()), format().width, colors);
        return {};
    }

private:
    const RowSourcePointer input_;
    Bytes row_;
};

/// `from` has alpha behind its `colors` samples a pixel when `hasAlpha` says so; `to` always has.
template <class Sample>
void fadeRow(const Sample* from, bool hasAlpha, Sample* to, std::size_t pixels, std::size_t colors,
             double fraction) {
    constexpr Sample full = static_cast<Sample>(~Sample{0});
    for (; pixels > 0; --pixels, from += colors + hasAlpha, to += colors + 1) {
        const Sample alpha = hasAlpha ? from[colors] : full;
        to[colors] = static_cast<Sample>(alpha * fraction + 0.5);
        for (std::size_t c = 0; c < colors; ++c)
            to[c] = to[colors] == 0 ? Sample{0} : from[c];
    }
}

class FadedRows final : public RowSource {
public:
    FadedRows(RowSourcePointer input, float fraction)
        : RowSource(withAlpha(input->format())), input_(std::move(input)),
          fraction_(static_cast<double>(fraction)), row_(input_->format().bytesPerRow()) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        if (Result<void> read = input_->readRow(row_); !read)
            return read;
        const RowFormat& from = input_->format();
        if (from.depth == SampleDepth::bits8)
            fadeRow(row_.data(), from.hasAlpha, row.data(), from.width, from.colorChannels(), fraction_);
        else
            fadeRow(reinterpret_cast<const std::uint16_t*>(row_.data()), from.hasAlpha,
                    reinterpret_cast<std::uint16_t*>(row.data()), from.width, from.colorChannels(),
                    fraction_);
        return {};
    }

private:
    const RowSourcePointer input_;
    const double fraction_;
    Bytes row_;
};

class RowsOf8Bits final : public RowSource {
public:
    explicit RowsOf8Bits(RowSourcePointer input)
        : RowSource(with8Bits(input->format())), input_(std::move(input)),
          row_(input_->format().bytesPerRow()) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        if (Result<void> read = input_->readRow(row_); !read)
            return read;
        const auto* wide = reinterpret_cast<const std::uint16_t*>(row_.data());
        std::transform(wide, wide + format().samplesPerRow(), row.begin(), [](std::uint16_t sample) {
            return static_cast<std::uint8_t>((sample + 128U) / 257U);
        });
        return {};
    }

private:
    const RowSourcePointer input_;
    Bytes row_;
};

class TurnedRows final : public RowSource {
public:
    TurnedRows(RowSourcePointer input, int quarterTurns)
        : RowSource(turned(input->format(), quarterTurns)), input_(std::move(input)),
          quarterTurns_(quarterTurns) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        if (input_ != nullptr) {
            Result<PixelBuffer> whole = readAllRows(*input_);
            if (!whole)
                return whole.failure();
            source_ = std::move(*whole);
            input_.reset();
        }
        const std::uint32_t y = next_++;
        for (std::uint32_t x = 0; x < format().width; ++x)
            std::memcpy(row.data() + x * format().bytesPerPixel(), sourcePixel(x, y),
                        format().bytesPerPixel());
        return {};
    }

private:
    /// A clockwise quarter turn takes the source's left column, from the bottom up, as its first row.
    const std::uint8_t* sourcePixel(std::uint32_t x, std::uint32_t y) const {
        const std::uint32_t right = source_.format.width - 1, bottom = source_.format.height - 1;
        const auto at = [this](std::size_t column, std::size_t line) {
            return source_.row(line).data() + column * source_.format.bytesPerPixel();
        };
        switch (quarterTurns_) {
        case 1:
            return at(y, bottom - x);
        case 2:
            return at(right - x, bottom - y);
        default:
            return at(right - y, x);
        }
    }

    RowSourcePointer input_; ///< null once the picture has been read
    const int quarterTurns_;
    PixelBuffer source_;
    std::uint32_t next_ = 0;
};

} // namespace

RowSourcePointer rowsOnWhite(RowSourcePointer input) {
    return input->format().hasAlpha ? std::make_unique<RowsOnWhite>(std::move(input)) : std::move(input);
}

RowSourcePointer rowsFaded(RowSourcePointer input, float fraction) {
    return std::make_unique<FadedRows>(std::move(input), fraction);
}

RowSourcePointer rowsOf8Bits(RowSourcePointer input) {
    return input->format().depth == SampleDepth::bits16 ? std::make_unique<RowsOf8Bits>(std::move(input))
                                                        : std::move(input);
}

RowSourcePointer turnedRows(RowSourcePointer input, int quarterTurns) {
    return quarterTurns == 0 ? std::move(input)
                             : std::make_unique<TurnedRows>(std::move(input), quarterTurns);
}

} // namespace kestrine
