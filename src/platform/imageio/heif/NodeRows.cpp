#include "platform/imageio/heif/NodeRows.h"

#include "platform/coregraphics/Premultiplication.h"
#include "platform/coregraphics/Resampler.h"
#include "platform/coregraphics/RowStages.h"
#include "platform/coregraphics/RowsAhead.h"
#include "platform/imageio/heif/PlanesToPixels.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace kestrine::heif {

namespace {

RowFormat sized(RowFormat layout, const Size& size) {
    layout.width = size.width;
    layout.height = size.height;
    return layout;
}

/// What is the same for all parts of a picture.
struct Decoding {
    PictureNodePointer root; ///< keeps the header
    std::shared_ptr<const ByteReader> reader;
    RowFormat layout;                   ///< the sides are not used
    std::optional<CodingPoints> points; ///< of the whole picture, for parts that have none
    std::size_t threads = 1;            ///< for each coded picture
};

/// Every `parts`-th row of tiles, from `part` on.
struct Share {
    std::uint32_t part = 0;
    std::uint32_t parts = 1;
};

RowSourcePointer rowsOfNode(const PictureNodePointer& node, const Decoding& decoding,
                            const Share& share = {});

class CodedRows final : public RowSource {
public:
    CodedRows(PictureNodePointer node, const Decoding& decoding)
        : RowSource(sized(decoding.layout, node->size)), node_(std::move(node)), decoding_(decoding) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        if (!converter_)
            TRY(decode());
        converter_->convert(y_++, format().width, row.data());
        return {};
    }

private:
    Result<void> decode() {
        const Bytes data = TRY(readRanges(*decoding_.reader, node_->data));
        picture_ = TRY(decodePicture(node_->properties.coding, data, node_->size, decoding_.threads));
        const std::optional<CodingPoints>& own = node_->properties.points;
        converter_ =
            TRY(PlanesToPixels::create(picture_->planes(), own ? own : decoding_.points, decoding_.layout));
        return {};
    }

    const PictureNodePointer node_;
    const Decoding decoding_;
    std::unique_ptr<CodedPicture> picture_; ///< null until the first row is read
    std::optional<PlanesToPixels> converter_;
    std::uint32_t y_ = 0;
};

class GridRows final : public RowSource {
public:
    GridRows(PictureNodePointer node, const Decoding& decoding, const Share& share)
        : RowSource(sized(decoding.layout, node->size)), node_(std::move(node)), decoding_(decoding),
          share_(share), tile_(node_->parts.front()->shownSize()), y_(share.part * tile_.height),
          tileRow_(sized(decoding.layout, tile_).bytesPerRow()) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        if (y_ % tile_.height == 0)
            openTiles();
        std::size_t position = 0;
        for (const RowSourcePointer& tile : tiles_) {
            TRY(tile->readRow(tileRow_));
            const std::size_t size = std::min(tileRow_.size(), row.size() - position);
            std::memcpy(row.data() + position, tileRow_.data(), size);
            position += size;
        }
        ++y_;
        if (y_ % tile_.height == 0)
            y_ += (share_.parts - 1) * tile_.height;
        return {};
    }

private:
    void openTiles() {
        tiles_.clear(); // before the next ones take memory
        const std::size_t first = std::size_t{y_ / tile_.height} * node_->columns;
        for (std::size_t i = first; i < first + node_->columns; ++i)
            tiles_.push_back(rowsOfNode(node_->parts[i], decoding_));
    }

    const PictureNodePointer node_;
    const Decoding decoding_;
    const Share share_;
    const Size tile_;
    std::uint32_t y_;
    std::vector<RowSourcePointer> tiles_; ///< of the row of tiles that y_ is in
    Bytes tileRow_;
};

/// Draws pictures on a canvas of one colour.
class OverlayRows final : public RowSource {
public:
    OverlayRows(PictureNodePointer node, const Decoding& decoding)
        : RowSource(sized(decoding.layout, node->size)), node_(std::move(node)), decoding_(decoding),
          canvas_(format().channels() * format().width), parts_(node_->parts.size()) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        fill();
        for (std::size_t i = 0; i < parts_.size(); ++i)
            TRY(draw(i));
        const double full = format().depth == SampleDepth::bits8 ? 255 : 65535;
        for (std::size_t i = 0; i < canvas_.size(); ++i) {
            const auto sample = static_cast<std::uint16_t>(canvas_[i] * full + 0.5);
            if (format().depth == SampleDepth::bits8)
                row[i] = static_cast<std::uint8_t>(sample);
            else
                std::memcpy(row.data() + 2 * i, &sample, sizeof sample);
        }
        ++y_;
        return {};
    }

private:
    void fill() {
        for (std::size_t i = 0; i < canvas_.size(); ++i)
            canvas_[i] = node_->fill[i % format().channels()] / 65535.0;
    }

    /// Draws the part of picture `i` that lies in this row.
    Result<void> draw(std::size_t i) {
        const PictureNodePointer& node = node_->parts[i];
        const auto [left, top] = node_->offsets[i];
        const std::int64_t y = std::int64_t{y_} - top;
        if (y < 0 || y >= node->shownSize().height)
            return {};
        if (parts_[i] == nullptr) {
            Decoding decoding = decoding_;
            decoding.layout.hasAlpha = node->hasAlpha;
            parts_[i] = rowsOfNode(node, decoding);
            part_.resize(parts_[i]->format().bytesPerRow());
            for (std::int64_t skipped = 0; skipped < y; ++skipped)
                TRY(parts_[i]->readRow(part_));
        }
        const RowFormat& from = parts_[i]->format();
        part_.resize(from.bytesPerRow());
        TRY(parts_[i]->readRow(part_));
        if (from.depth == SampleDepth::bits8)
            blend(part_.data(), from, left);
        else
            blend(reinterpret_cast<const std::uint16_t*>(part_.data()), from, left);
        if (y + 1 == from.height)
            parts_[i].reset();
        return {};
    }

    template <class Sample>
    void blend(const Sample* pixel, const RowFormat& from, std::int32_t left) {
        constexpr double full = std::numeric_limits<Sample>::max();
        const std::size_t colors = format().colorChannels(), channels = format().channels();
        for (std::uint32_t i = 0; i < from.width; ++i, pixel += from.channels()) {
            const std::int64_t x = std::int64_t{left} + i;
            if (x < 0 || x >= format().width)
                continue;
            double* const to = canvas_.data() + static_cast<std::size_t>(x) * channels;
            const double alpha = from.hasAlpha ? pixel[colors] / full : 1;
            const double below = (format().hasAlpha ? to[colors] : 1) * (1 - alpha);
            const double sum = alpha + below;
            for (std::size_t c = 0; c < colors; ++c)
                to[c] = sum == 0 ? 0 : std::min((pixel[c] / full * alpha + to[c] * below) / sum, 1.0);
            if (format().hasAlpha)
                to[colors] = std::min(sum, 1.0);
        }
    }

    const PictureNodePointer node_;
    const Decoding decoding_;
    std::vector<double> canvas_;          ///< samples of this row, 0 to 1
    std::vector<RowSourcePointer> parts_; ///< null before the first and after the last row
    Bytes part_;
    std::uint32_t y_ = 0;
};

/// Puts alpha from a grey picture into the pixels.
class RowsWithAlpha final : public RowSource {
public:
    RowsWithAlpha(RowSourcePointer colors, RowSourcePointer alpha, bool isPremultiplied)
        : RowSource(colors->format()), colors_(std::move(colors)), alpha_(std::move(alpha)),
          isPremultiplied_(isPremultiplied), alphaRow_(alpha_->format().bytesPerRow()) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        TRY(colors_->readRow(row));
        TRY(alpha_->readRow(alphaRow_));
        if (format().depth == SampleDepth::bits8)
            add(alphaRow_.data(), row.data());
        else
            add(reinterpret_cast<const std::uint16_t*>(alphaRow_.data()),
                reinterpret_cast<std::uint16_t*>(row.data()));
        if (isPremultiplied_)
            undoPremultiplication(format(), row);
        return {};
    }

private:
    template <class Sample>
    void add(const Sample* alpha, Sample* pixels) const {
        const std::size_t channels = format().channels();
        for (std::size_t x = 0; x < format().width; ++x)
            pixels[(x + 1) * channels - 1] = alpha[x];
    }

    const RowSourcePointer colors_, alpha_;
    const bool isPremultiplied_;
    Bytes alphaRow_;
};

/// A part of the rows.
class CutRows final : public RowSource {
public:
    CutRows(RowSourcePointer input, const Area& area)
        : RowSource(sized(input->format(), area.size)), input_(std::move(input)), area_(area),
          row_(input_->format().bytesPerRow()) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        for (; skipped_ < area_.top; ++skipped_)
            TRY(input_->readRow(row_));
        TRY(input_->readRow(row_));
        std::memcpy(row.data(), row_.data() + area_.left * format().bytesPerPixel(), row.size());
        return {};
    }

private:
    const RowSourcePointer input_;
    const Area area_;
    Bytes row_;
    std::uint32_t skipped_ = 0;
};

/// An alpha plane may be smaller than its picture.
RowSourcePointer scaledTo(const Size& size, RowSourcePointer rows) {
    const RowFormat from = rows->format();
    if (from.width == size.width && from.height == size.height)
        return rows;
    const Resampling filling{AxisMap::filling(from.width, size.width),
                             AxisMap::filling(from.height, size.height)};
    return resampledRows(std::move(rows), filling, nullptr, from.depth);
}

RowSourcePointer rowsOfContent(const PictureNodePointer& node, const Decoding& decoding, const Share& share) {
    switch (node->kind) {
    case PictureNode::Kind::grid:
        return std::make_unique<GridRows>(node, decoding, share);
    case PictureNode::Kind::overlay:
        return std::make_unique<OverlayRows>(node, decoding);
    case PictureNode::Kind::same:
        return rowsOfNode(node->parts.front(), decoding);
    default:
        return std::make_unique<CodedRows>(node, decoding);
    }
}

/// The rows before the turn.
RowSourcePointer rowsBeforeTurn(const PictureNodePointer& node, const Decoding& inherited,
                                const Share& share) {
    Decoding decoding = inherited;
    if (node->properties.points)
        decoding.points = node->properties.points;
    RowSourcePointer rows = rowsOfContent(node, decoding, share);
    if (node->alpha && decoding.layout.hasAlpha) {
        Decoding grey = inherited;
        grey.layout.model = ColorModel::gray;
        grey.layout.hasAlpha = false;
        grey.points.reset();
        RowSourcePointer alpha = scaledTo(node->size, rowsOfContent(node->alpha, grey, share));
        rows = std::make_unique<RowsWithAlpha>(std::move(rows), std::move(alpha), node->isPremultiplied);
    }
    if (node->placement.keepsRowsOf(node->size))
        return rows;
    rows = std::make_unique<CutRows>(std::move(rows), node->placement.area());
    return node->placement.isMirrored() ? mirroredRows(std::move(rows)) : std::move(rows);
}

RowSourcePointer rowsOfNode(const PictureNodePointer& node, const Decoding& decoding, const Share& share) {
    return turnedRows(rowsBeforeTurn(node, decoding, share), node->placement.quarterTurns());
}

/// The height of the rows of tiles that can be decoded independently; 0 if there are none.
std::uint32_t rowsPerShare(const PictureNode& root) {
    const auto tileHeight = [](const PictureNode& node) {
        return node.kind == PictureNode::Kind::grid ? node.parts.front()->shownSize().height : 0;
    };
    const std::uint32_t height = tileHeight(root);
    const bool isSameInAlpha =
        root.alpha == nullptr || (root.alpha->size == root.size && tileHeight(*root.alpha) == height);
    const bool startsAtTop = root.placement.area().top == 0;
    return isSameInAlpha && startsAtTop && height < root.size.height ? height : 0;
}

/// The memory for what is decoded at the same time, in bytes.
std::uint64_t held(const PictureNode& node, const RowFormat& layout) {
    const auto withTurn = [&](const PictureNode& part) {
        const bool isTurned = part.placement.quarterTurns() != 0;
        return held(part, layout) + (isTurned ? sized(layout, part.shownSize()).bytes() : 0);
    };
    std::uint64_t bytes = node.alpha ? held(*node.alpha, layout) : 0;
    if (node.kind == PictureNode::Kind::coded)
        return bytes + bytesToDecode(node.properties.coding, node.size);
    if (node.kind == PictureNode::Kind::grid)
        return bytes + node.columns * withTurn(*node.parts.front());
    for (const PictureNodePointer& part : node.parts)
        bytes += withTurn(*part);
    return bytes;
}

} // namespace

RowSourcePointer rowsOfPicture(const PictureNodePointer& root, std::shared_ptr<const ByteReader> reader,
                               const RowFormat& layout) {
    const std::size_t threads = usefulThreads(sized(layout, root->placement.area().size));
    const std::uint32_t rowsPerBand = rowsPerShare(*root);
    if (threads == 1 || rowsPerBand == 0)
        return rowsBeforeTurn(root, {root, std::move(reader), layout, {}, threads}, {});
    std::vector<RowSourcePointer> parts;
    const auto count = static_cast<std::uint32_t>(threads);
    for (std::uint32_t part = 0; part < count; ++part)
        parts.push_back(rowsBeforeTurn(root, {root, reader, layout, {}, 1}, {part, count}));
    return rowsInTurns(std::move(parts), rowsPerBand);
}

std::uint64_t bytesHeldFor(const PictureNode& root, const RowFormat& layout) {
    const bool isShared = rowsPerShare(root) != 0;
    return held(root, layout) * (isShared ? usefulThreads(sized(layout, root.shownSize())) : 1);
}

} // namespace kestrine::heif
