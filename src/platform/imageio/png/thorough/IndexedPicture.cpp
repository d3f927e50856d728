#include "platform/imageio/png/thorough/IndexedPicture.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <numeric>
#include <tuple>

namespace kestrine::png {

namespace {

constexpr std::size_t mostColors = 256;

/// The colours seen so far, as they are stored in the rows.
class ColorTable {
public:
    explicit ColorTable(std::size_t limit) : limit_(limit) { places_.fill(none); }

    /// The number of the colour, in the order of appearance; nullopt if there would be too many.
    std::optional<std::uint8_t> numberOf(std::uint32_t color) {
        std::size_t place = (color * 0x9E3779B1u) >> 22; // Fibonacci hashing to 10 bits
        for (; places_[place] != none; place = (place + 1) % places_.size())
            if (colors_[places_[place]] == color)
                return static_cast<std::uint8_t>(places_[place]);
        if (colors_.size() == limit_)
            return std::nullopt;
        places_[place] = static_cast<std::uint16_t>(colors_.size());
        colors_.push_back(color);
        return static_cast<std::uint8_t>(colors_.size() - 1);
    }

    const std::vector<std::uint32_t>& colors() const { return colors_; }

private:
    static constexpr std::uint16_t none = 0xFFFF;

    const std::size_t limit_;
    std::vector<std::uint32_t> colors_;
    std::array<std::uint16_t, 4 * mostColors> places_;
};

/// The samples of a pixel as a number.
std::uint32_t packed(const std::uint8_t* pixel, std::size_t channels) {
    std::uint32_t color = 0;
    std::memcpy(&color, pixel, channels);
    return color;
}

PaletteColor paletteColor(std::uint32_t color, const RowFormat& format) {
    std::array<std::uint8_t, 4> samples{};
    std::memcpy(samples.data(), &color, format.channels());
    const std::uint8_t alpha = format.hasAlpha ? samples[format.channels() - 1] : 255;
    return format.model == ColorModel::gray ? PaletteColor{samples[0], samples[0], samples[0], alpha}
                                            : PaletteColor{samples[0], samples[1], samples[2], alpha};
}

/// Indices of neighbouring colours should be near each other, and the list of alphas should be short.
auto orderOf(const PaletteColor& color) {
    const int brightness = 299 * color.red + 587 * color.green + 114 * color.blue;
    return std::tuple(color.alpha == 255, brightness, color.red, color.green, color.alpha);
}

void sortPalette(IndexedPicture& picture) {
    std::vector<std::uint8_t> order(picture.palette.size()), newIndex(order.size());
    std::iota(order.begin(), order.end(), std::uint8_t{0});
    std::ranges::sort(order, {}, [&](std::uint8_t index) { return orderOf(picture.palette[index]); });
    std::vector<PaletteColor> sorted;
    for (const std::uint8_t index : order) {
        newIndex[index] = static_cast<std::uint8_t>(sorted.size());
        sorted.push_back(picture.palette[index]);
    }
    picture.palette = std::move(sorted);
    for (std::uint8_t& index : picture.indices)
        index = newIndex[index];
}

/// The rows that were read, then the others.
class RegainedRows final : public RowSource {
public:
    RegainedRows(RowSource& rest, ColorTable table, Bytes indices, Bytes lastRead)
        : RowSource(rest.format()), rest_(rest), table_(std::move(table)), indices_(std::move(indices)),
          lastRead_(std::move(lastRead)) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        if (used_ < indices_.size()) {
            const std::size_t channels = format().channels();
            for (std::size_t x = 0; x < format().width; ++x)
                std::memcpy(row.data() + x * channels, &table_.colors()[indices_[used_ + x]], channels);
            used_ += format().width;
            return {};
        }
        if (lastRead_.empty())
            return rest_.readRow(row);
        std::ranges::copy(lastRead_, row.begin());
        indices_ = {};
        lastRead_.clear();
        return {};
    }

private:
    RowSource& rest_;
    const ColorTable table_;
    Bytes indices_, lastRead_;
    std::size_t used_ = 0;
};

} // namespace

int IndexedPicture::bits() const {
    int bits = 1;
    while (palette.size() > std::size_t{1} << bits)
        bits *= 2;
    return bits;
}

Result<std::variant<IndexedPicture, RowSourcePointer>> indexedIfPossible(RowSource& rows,
                                                                         std::size_t maxColors) {
    using Either = std::variant<IndexedPicture, RowSourcePointer>;
    const RowFormat format = rows.format();
    const std::size_t channels = format.channels();
    ColorTable table(std::min(maxColors, mostColors));
    IndexedPicture picture{format.width, format.height, {}, {}};
    Bytes row(format.bytesPerRow());
    for (std::uint32_t y = 0; y < format.height; ++y) {
        TRY(rows.readRow(row));
        for (std::uint32_t x = 0; x < format.width; ++x) {
            const auto number = table.numberOf(packed(row.data() + x * channels, channels));
            if (!number) {
                picture.indices.resize(std::size_t{y} * format.width);
                return Either(std::make_unique<RegainedRows>(rows, std::move(table),
                                                             std::move(picture.indices), std::move(row)));
            }
            picture.indices.push_back(*number);
        }
    }
    for (const std::uint32_t color : table.colors())
        picture.palette.push_back(paletteColor(color, format));
    sortPalette(picture);
    return Either(std::move(picture));
}

} // namespace kestrine::png
