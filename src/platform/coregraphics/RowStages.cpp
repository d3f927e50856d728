#include "platform/coregraphics/RowStages.h"

#include "platform/coregraphics/PixelBuffer.h"

#include <algorithm>
#include <array>
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

/// colour * alpha + background * (1 - alpha), rounded. As in drawing, this is computed in the stored
/// encoding.
template <class Sample>
void flattenRow(const Sample* from, Sample* to, std::size_t pixels, std::size_t colors,
                const ColorSamples& background) {
    constexpr std::uint64_t full = static_cast<Sample>(~Sample{0});
    for (; pixels > 0; --pixels, from += colors + 1, to += colors)
        for (std::size_t c = 0; c < colors; ++c)
            to[c] = static_cast<Sample>(
                (from[c] * std::uint64_t{from[colors]} + background[c] * (full - from[colors]) + full / 2)
                / full);
}

class RowsOnBackground final : public RowSource {
public:
    RowsOnBackground(RowSourcePointer input, const ColorSamples& background)
        : RowSource(withoutAlpha(input->format())), input_(std::move(input)), background_(background),
          row_(input_->format().bytesPerRow()) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        TRY(input_->readRow(row_));
        const std::size_t colors = format().channels();
        if (format().depth == SampleDepth::bits8)
            flattenRow(row_.data(), row.data(), format().width, colors, background_);
        else
            flattenRow(reinterpret_cast<const std::uint16_t*>(row_.data()),
                       reinterpret_cast<std::uint16_t*>(row.data()), format().width, colors, background_);
        return {};
    }

private:
    const RowSourcePointer input_;
    const ColorSamples background_;
    Bytes row_;
};

RowFormat padded(RowFormat format, const Margins& margins) {
    format.width += margins.left + margins.right;
    format.height += margins.top + margins.bottom;
    return format;
}

/// A row of opaque pixels of one colour.
template <class Sample>
Bytes filledRow(const RowFormat& format, const ColorSamples& color) {
    Bytes row(format.bytesPerRow());
    auto* sample = reinterpret_cast<Sample*>(row.data());
    for (std::uint32_t i = 0; i < format.width; ++i) {
        for (std::size_t c = 0; c < format.colorChannels(); ++c)
            *sample++ = static_cast<Sample>(color[c]);
        if (format.hasAlpha)
            *sample++ = static_cast<Sample>(~Sample{0});
    }
    return row;
}

class RowsWithMargins final : public RowSource {
public:
    RowsWithMargins(RowSourcePointer input, const Margins& margins, const ColorSamples& color)
        : RowSource(padded(input->format(), margins)), input_(std::move(input)), margins_(margins),
          margin_(format().depth == SampleDepth::bits8 ? filledRow<std::uint8_t>(format(), color)
                                                       : filledRow<std::uint16_t>(format(), color)) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        const std::uint32_t y = next_++;
        std::ranges::copy(margin_, row.begin());
        if (y < margins_.top || y - margins_.top >= input_->format().height)
            return {};
        return input_->readRow(
            row.subspan(margins_.left * format().bytesPerPixel(), input_->format().bytesPerRow()));
    }

private:
    const RowSourcePointer input_;
    const Margins margins_;
    const Bytes margin_; ///< a whole row
    std::uint32_t next_ = 0;
};

/// Pixels of `from` have `colors` samples, then alpha if `hasAlpha`; pixels of `to` always have alpha.
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
        TRY(input_->readRow(row_));
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
        TRY(input_->readRow(row_));
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

/// Copies `count` pixels of `size` bytes from places `step` bytes apart to adjacent places.
template <std::size_t size>
void copyPixels(const std::uint8_t* from, std::ptrdiff_t step, std::uint8_t* to, std::uint32_t count) {
    for (std::ptrdiff_t i = 0; i < count; ++i)
        std::memcpy(to + i * static_cast<std::ptrdiff_t>(size), from + i * step, size);
}

/// The functions by the size of a pixel, beginning with 1 byte.
constexpr std::array pixelCopies = {copyPixels<1>, copyPixels<2>, copyPixels<3>, copyPixels<4>,
                                    copyPixels<5>, copyPixels<6>, copyPixels<7>, copyPixels<8>};

class MirroredRows final : public RowSource {
public:
    explicit MirroredRows(RowSourcePointer input)
        : RowSource(input->format()), input_(std::move(input)),
          copyPixels_(pixelCopies[format().bytesPerPixel() - 1]), row_(format().bytesPerRow()) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        TRY(input_->readRow(row_));
        const auto pixel = static_cast<std::ptrdiff_t>(format().bytesPerPixel());
        copyPixels_(row_.data() + row_.size() - static_cast<std::size_t>(pixel), -pixel, row.data(),
                    format().width);
        return {};
    }

private:
    const RowSourcePointer input_;
    decltype(&copyPixels<1>) const copyPixels_;
    Bytes row_;
};

/// Rows are made in squares of this many pixels per side: a quarter turn reads columns, and each source row
/// in the cache then serves a whole side of a square.
constexpr std::uint32_t turnedRowsAtOnce = 32;

class TurnedRows final : public RowSource {
public:
    TurnedRows(RowSourcePointer input, int quarterTurns)
        : RowSource(turned(input->format(), quarterTurns)), input_(std::move(input)),
          quarterTurns_(quarterTurns), copyPixels_(pixelCopies[format().bytesPerPixel() - 1]),
          rows_(format().bytesPerRow() * std::min(turnedRowsAtOnce, format().height)) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        if (input_ != nullptr) {
            source_ = TRY(readAllRows(*input_));
            input_.reset();
        }
        if (next_ % turnedRowsAtOnce == 0)
            turnRows();
        std::memcpy(row.data(), rows_.data() + next_ % turnedRowsAtOnce * row.size(), row.size());
        ++next_;
        return {};
    }

private:
    /// Fills rows_ from row next_ on.
    void turnRows() {
        const std::uint32_t count = std::min(turnedRowsAtOnce, format().height - next_);
        const std::uint32_t width = format().width;
        const std::uint32_t atOnce = quarterTurns_ == 2 ? width : turnedRowsAtOnce; // rows need no squares
        for (std::uint32_t x = 0; x < width; x += atOnce)
            for (std::uint32_t i = 0; i < count; ++i)
                turnPixels(x, std::min(atOnce, width - x), i);
    }

    /// Fills `count` pixels of rows_ from (x, i) on. The first row of a clockwise quarter turn is the left
    /// column of the source from bottom to top; that of a counter-clockwise one is the right column from top
    /// to bottom.
    void turnPixels(std::uint32_t x, std::uint32_t count, std::uint32_t i) {
        const std::uint32_t right = source_.format.width - 1, bottom = source_.format.height - 1;
        const std::uint32_t y = next_ + i;
        const auto pixel = static_cast<std::ptrdiff_t>(format().bytesPerPixel());
        const auto line = static_cast<std::ptrdiff_t>(source_.format.bytesPerRow());
        std::uint8_t* to = rows_.data() + i * format().bytesPerRow() + x * format().bytesPerPixel();
        switch (quarterTurns_) {
        case 1:
            return copyPixels_(sourcePixel(y, bottom - x), -line, to, count);
        case 2:
            return copyPixels_(sourcePixel(right - x, bottom - y), -pixel, to, count);
        default:
            return copyPixels_(sourcePixel(right - y, x), line, to, count);
        }
    }

    const std::uint8_t* sourcePixel(std::size_t column, std::size_t line) const {
        return source_.row(line).data() + column * source_.format.bytesPerPixel();
    }

    RowSourcePointer input_; ///< null once the picture has been read
    const int quarterTurns_;
    decltype(&copyPixels<1>) const copyPixels_;
    PixelBuffer source_;
    Bytes rows_; ///< rows from the last multiple of turnedRowsAtOnce on
    std::uint32_t next_ = 0;
};

} // namespace

RowSourcePointer rowsOnBackground(RowSourcePointer input, const ColorSamples& background) {
    return input->format().hasAlpha ? std::make_unique<RowsOnBackground>(std::move(input), background)
                                    : std::move(input);
}

RowSourcePointer rowsOnWhite(RowSourcePointer input) {
    const ColorSamples samples = samplesOf(white, input->format(), nullptr);
    return rowsOnBackground(std::move(input), samples);
}

RowSourcePointer rowsWithMargins(RowSourcePointer input, const Margins& margins, const ColorSamples& color) {
    return std::make_unique<RowsWithMargins>(std::move(input), margins, color);
}

RowSourcePointer mirroredRows(RowSourcePointer input) {
    return std::make_unique<MirroredRows>(std::move(input));
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
