// Reads the first picture of a GIF file. The parts of the logical screen that it does not cover are
// transparent. Later pictures, and so animations, and texts are ignored.

#include "platform/imageio/Codecs.h"
#include "platform/imageio/ForwardReader.h"
#include "platform/imageio/HeldReader.h"
#include "platform/imageio/gif/CodeCheck.h"
#include "platform/imageio/gif/Library.h"
#include "platform/imageio/gif/PictureCount.h"

#include <algorithm>
#include <array>
#include <span>

namespace kestrine::gif {

namespace {

/// Codes have at most 12 bits and stand for fewer than 4096 pixels each.
constexpr std::uint64_t maximumPixelsPerByte = 4096 * 8 / 12;

struct CloseGIF {
    void operator()(GifFileType* file) const { (*installedFunctions()).close(file, nullptr); }
};
using Handle = std::unique_ptr<GifFileType, CloseGIF>;

/// The first picture and its position on the logical screen, in pixels.
struct Layout {
    std::uint32_t screenWidth, screenHeight;
    std::uint32_t left, top, width, height;
    bool isInterlaced;
    std::optional<std::uint8_t> transparent;
    Bytes colors; ///< red, green, blue per colour

    bool coversScreen() const { return width == screenWidth && height == screenHeight; }
};

Failure failureOf(int code) {
    if (code == D_GIF_ERR_EOF_TOO_SOON || code == D_GIF_ERR_READ_FAILED)
        return {Reason::truncated, "the GIF file ends too early"};
    if (code == D_GIF_ERR_NOT_ENOUGH_MEM)
        return {Reason::tooLarge, "there is not enough memory for the GIF picture"};
    return {Reason::malformed, "the GIF file is damaged"};
}

/// Reads a GIF file up to the end of its first picture.
class Stream {
public:
    static Result<std::unique_ptr<Stream>> open(std::shared_ptr<const ByteReader> reader);

    const Layout& layout() const { return layout_; }

    /// Whether every code of the picture is valid. Must be called instead of reading the rows.
    bool hasSoundCodes();

    /// Reads the indices of the next row, in stored order.
    Result<void> readIndices(std::span<std::uint8_t> row) {
        if (giflib_.readIndices(file_.get(), row.data(), static_cast<int>(row.size())) != GIF_OK)
            return failureOf(file_->Error);
        return {};
    }

private:
    Stream(const Functions& giflib, std::shared_ptr<const ByteReader> reader)
        : giflib_(giflib), reader_(reader), input_(std::move(reader)) {}

    static int read(GifFileType* file, GifByteType* into, int count) {
        auto& input = *static_cast<ForwardReader*>(file->UserData);
        return static_cast<int>(input.read(std::span(into, static_cast<std::size_t>(count))));
    }
    Result<void> goToPicture();
    Result<void> readExtension();
    Result<void> layOut();

    const Functions& giflib_;
    const std::shared_ptr<const ByteReader> reader_;
    ForwardReader input_;
    Handle file_;
    Layout layout_{};
};

Result<std::unique_ptr<Stream>> Stream::open(std::shared_ptr<const ByteReader> reader) {
    if (!installedFunctions())
        return installedFunctions().failure();
    std::unique_ptr<Stream> stream(new Stream(*installedFunctions(), std::move(reader)));
    int error = 0;
    stream->file_.reset(stream->giflib_.open(&stream->input_, read, &error));
    if (!stream->file_)
        return failureOf(error);
    TRY(stream->goToPicture());
    TRY(stream->layOut());
    return stream;
}

/// Reads the descriptor of the first picture and the extensions before it.
Result<void> Stream::goToPicture() {
    GifRecordType record = UNDEFINED_RECORD_TYPE;
    while (giflib_.readRecordType(file_.get(), &record) == GIF_OK) {
        if (record == TERMINATE_RECORD_TYPE)
            return Failure{Reason::empty, "the GIF file holds no picture"};
        if (record == IMAGE_DESC_RECORD_TYPE)
            return giflib_.readDescriptor(file_.get()) == GIF_OK ? Result<void>{} : failureOf(file_->Error);
        TRY(readExtension());
    }
    return failureOf(file_->Error);
}

/// Only the graphic control extension matters: it defines the transparent index. The last one counts.
Result<void> Stream::readExtension() {
    int code = 0;
    GifByteType* block = nullptr;
    int status = giflib_.readExtension(file_.get(), &code, &block);
    GraphicsControlBlock control{};
    if (status == GIF_OK && block && code == GRAPHICS_EXT_FUNC_CODE
        && giflib_.parseControl(block[0], block + 1, &control) == GIF_OK) {
        layout_.transparent.reset();
        if (control.TransparentColor != NO_TRANSPARENT_COLOR)
            layout_.transparent = static_cast<std::uint8_t>(control.TransparentColor);
    }
    while (status == GIF_OK && block)
        status = giflib_.readExtensionBlock(file_.get(), &block);
    return status == GIF_OK ? Result<void>{} : failureOf(file_->Error);
}

Bytes colorsIn(const ColorMapObject& map) {
    Bytes colors;
    for (const GifColorType& color : std::span(map.Colors, static_cast<std::size_t>(map.ColorCount)))
        colors.insert(colors.end(), {color.Red, color.Green, color.Blue});
    return colors;
}

/// The colours for a file without colour table.
Bytes greys() {
    Bytes colors;
    for (unsigned grey = 0; grey < 256; ++grey)
        colors.insert(colors.end(), 3, static_cast<std::uint8_t>(grey));
    return colors;
}

/// Determines the layout. As in viewers, a screen that is too small is enlarged to hold the picture, and a
/// screen without a size gets that of the picture.
Result<void> Stream::layOut() {
    const GifImageDesc& image = file_->Image;
    const ColorMapObject* map = image.ColorMap ? image.ColorMap : file_->SColorMap;
    if (image.Width <= 0 || image.Height <= 0)
        return Failure{Reason::empty, "the first picture of the GIF file has no pixels"};
    layout_.colors = map != nullptr ? colorsIn(*map) : greys();
    layout_.isInterlaced = image.Interlace;
    layout_.width = static_cast<std::uint32_t>(image.Width);
    layout_.height = static_cast<std::uint32_t>(image.Height);
    layout_.left = file_->SWidth == 0 ? 0 : static_cast<std::uint32_t>(image.Left);
    layout_.top = file_->SHeight == 0 ? 0 : static_cast<std::uint32_t>(image.Top);
    layout_.screenWidth = std::max(static_cast<std::uint32_t>(file_->SWidth), layout_.left + layout_.width);
    layout_.screenHeight = std::max(static_cast<std::uint32_t>(file_->SHeight), layout_.top + layout_.height);
    return {};
}

bool Stream::hasSoundCodes() {
    std::uint8_t bits = 0; // the byte before the codes, which the library has read
    reader_->readAt(input_.offset() - 1, {&bits, 1});
    CodeCheck check(bits, std::uint64_t{layout_.width} * layout_.height);
    while (!check.isComplete()) {
        int code = 0;
        if (giflib_.readCode(file_.get(), &code) != GIF_OK || !check.accepts(code))
            return false;
    }
    return true;
}

RowFormat formatOf(const Layout& layout) {
    const bool hasAlpha = layout.transparent.has_value() || !layout.coversScreen();
    return {layout.screenWidth, layout.screenHeight, ColorModel::rgb, hasAlpha, SampleDepth::bits8};
}

/// Which rows of an interlaced picture are stored together.
struct Pass {
    std::uint32_t first, step;

    bool contains(std::uint32_t y) const { return y % step == first; }
    std::uint32_t rows(std::uint32_t height) const {
        return height <= first ? 0 : (height - first + step - 1) / step;
    }
};
constexpr std::array<Pass, 4> passes = {{{0, 8}, {4, 8}, {2, 4}, {1, 2}}};

class Rows final : public RowSource {
public:
    /// `stream` belongs to the file that `reader` reads.
    Rows(std::unique_ptr<Stream> stream, std::shared_ptr<const ByteReader> reader,
         std::shared_ptr<DamageRecord> damage);

    Result<void> readRow(std::span<std::uint8_t> row) override;

private:
    Result<void> readIndices();
    Result<void> readInterlacedIndices(std::uint32_t y);
    Result<void> holdEvenRows();
    Result<void> startPass(std::size_t pass);
    void paint(std::span<const std::uint8_t> indices, std::span<std::uint8_t> pixels) const;

    void checkCodes() const;
    Result<void> endAt(const Failure& damage);

    const std::shared_ptr<const ByteReader> reader_;
    const std::shared_ptr<DamageRecord> damage_;
    const Layout layout_;
    /// One stream per pass if the picture is interlaced and too large to be held in memory; otherwise only
    /// the first is used.
    std::array<std::unique_ptr<Stream>, passes.size()> streams_;
    Bytes evenRows_; ///< indices of the rows before the last pass, if an interlaced picture is small
    std::array<std::array<std::uint8_t, 4>, 256> pixelOfIndex_; ///< red, green, blue, alpha
    std::uint32_t next_ = 0;
    Bytes indices_;        ///< of the current row
    bool hasRows_ = false; ///< whether indices of a row were read
    bool isDamaged_ = false;
    bool lacksOddRows_ = false; ///< of an interlaced picture that is held
};

/// Indices outside the colour table are black.
Rows::Rows(std::unique_ptr<Stream> stream, std::shared_ptr<const ByteReader> reader,
           std::shared_ptr<DamageRecord> damage)
    : RowSource(formatOf(stream->layout())), reader_(std::move(reader)), damage_(std::move(damage)),
      layout_(stream->layout()), indices_(layout_.width) {
    streams_.front() = std::move(stream);
    pixelOfIndex_.fill({0, 0, 0, 255});
    for (std::size_t i = 0; 3 * i < layout_.colors.size(); ++i)
        std::copy_n(layout_.colors.begin() + static_cast<std::ptrdiff_t>(3 * i), 3, pixelOfIndex_[i].begin());
    if (layout_.transparent)
        pixelOfIndex_[*layout_.transparent] = {0, 0, 0, 0};
}

Result<void> Rows::readRow(std::span<std::uint8_t> row) {
    std::ranges::fill(row, std::uint8_t{0});
    const std::uint32_t y = next_++;
    if (isDamaged_ || y < layout_.top || y - layout_.top >= layout_.height)
        return {};
    if (const Result<void> read = readIndices(); !read)
        return endAt(read.failure());
    hasRows_ = true;
    if (next_ == layout_.top + layout_.height)
        checkCodes();
    const std::size_t bytesPerPixel = format().bytesPerPixel();
    paint(indices_, row.subspan(layout_.left * bytesPerPixel, layout_.width * bytesPerPixel));
    return {};
}

/// What follows is clear, or black in a picture without alpha. Without any sound row there is a failure.
Result<void> Rows::endAt(const Failure& damage) {
    if (!hasRows_ || damage.reason == Reason::tooLarge)
        return damage;
    damage_->note(damage);
    isDamaged_ = true;
    return {};
}

/// Reads the codes once more, since giflib delivers either codes or indices.
void Rows::checkCodes() const {
    const Result<std::unique_ptr<Stream>> stream = Stream::open(reader_);
    if (!stream || !(*stream)->hasSoundCodes())
        damage_->note({Reason::malformed, "the GIF picture is damaged: it has codes without a meaning"});
}

/// Fills indices_ with the next row from the top.
Result<void> Rows::readIndices() {
    return layout_.isInterlaced ? readInterlacedIndices(next_ - 1 - layout_.top)
                                : streams_.front()->readIndices(indices_);
}

Result<void> Rows::readInterlacedIndices(std::uint32_t y) {
    constexpr std::uint64_t maxHeldPixels = std::uint64_t{1} << 22;
    const bool isHeld = std::uint64_t{layout_.width} * layout_.height <= maxHeldPixels;
    if (isHeld && y == 0)
        TRY(holdEvenRows());
    if (isHeld && (y % 2 == 0 || lacksOddRows_)) {
        std::copy_n(evenRows_.begin() + std::ptrdiff_t{y / 2} * layout_.width, layout_.width,
                    indices_.begin());
        return {};
    }
    std::size_t pass = 0;
    while (!isHeld && !passes[pass].contains(y))
        ++pass;
    if (streams_[pass] == nullptr)
        TRY(startPass(pass));
    const Result<void> read = streams_[pass]->readIndices(indices_);
    if (read || !isHeld)
        return read;
    lacksOddRows_ = true;
    damage_->note(read.failure());
    return readInterlacedIndices(y);
}

/// Reads all passes but the last, which has the odd rows. After damage, missing rows are copies of those
/// above them, as viewers show a picture that is still being loaded.
Result<void> Rows::holdEvenRows() {
    evenRows_.resize(std::size_t{layout_.width} * ((layout_.height + 1) / 2));
    const auto row = [this](std::uint32_t y) {
        return std::span(evenRows_).subspan(std::size_t{y} / 2 * layout_.width, layout_.width);
    };
    std::vector<bool> isRead((layout_.height + 1) / 2);
    Result<void> read;
    for (const Pass& pass : std::span(passes).first(passes.size() - 1))
        for (std::uint32_t y = pass.first; read && y < layout_.height; y += pass.step) {
            read = streams_.front()->readIndices(row(y));
            isRead[y / 2] = read.ok();
        }
    if (read || !isRead.front())
        return read;
    lacksOddRows_ = true;
    damage_->note(read.failure());
    for (std::uint32_t y = 2; y < layout_.height; y += 2)
        if (!isRead[y / 2])
            std::ranges::copy(row(y - 2), row(y).begin());
    return {};
}

/// Opens the file once more and skips the earlier passes. They are short: all streams together decode twice
/// as many codes as one.
Result<void> Rows::startPass(std::size_t pass) {
    std::unique_ptr<Stream> stream = TRY(Stream::open(reader_));
    if (stream->layout().width != layout_.width)
        return Failure{Reason::malformed, "the GIF file changed while it was read"};
    for (std::size_t earlier = 0; earlier < pass; ++earlier)
        for (std::uint32_t row = passes[earlier].rows(layout_.height); row > 0; --row)
            TRY(stream->readIndices(indices_));
    streams_[pass] = std::move(stream);
    return {};
}

void Rows::paint(std::span<const std::uint8_t> indices, std::span<std::uint8_t> pixels) const {
    const std::size_t channels = format().channels();
    auto into = pixels.begin();
    for (const std::uint8_t index : indices)
        for (std::size_t c = 0; c < channels; ++c)
            *into++ = pixelOfIndex_[index][c];
}

class Decoder final : public ImageDecoder {
public:
    Decoder(std::shared_ptr<const ByteReader> reader, std::unique_ptr<Stream> stream)
        : reader_(std::move(reader)), colors_(stream->layout().colors) {
        frames_.push_back({.format = formatOf(stream->layout()), .storedBitsPerPixel = 8});
        stream_.hold(std::move(stream));
    }

    Result<RowSourcePointer> rows(std::size_t, int) const override {
        std::unique_ptr<Stream> stream = TRY(streamAtPixels());
        const Layout& layout = stream->layout();
        if (std::uint64_t{layout.width} * layout.height / maximumPixelsPerByte > reader_->size())
            return Failure{Reason::truncated, "the GIF file is too short for its pixels"};
        return RowSourcePointer(std::make_unique<Rows>(std::move(stream), reader_, damage_));
    }

    Result<Bytes> colorTable() const override { return colors_; }

    FileContents contents() const override {
        return FileContents::several(FileContents::Kind::animation, countPictures(reader_));
    }

private:
    Result<std::unique_ptr<Stream>> streamAtPixels() const {
        std::unique_ptr<Stream> stream = stream_.take();
        if (stream != nullptr)
            return stream;
        stream = TRY(Stream::open(reader_));
        if (formatOf(stream->layout()) != frames_[0].format)
            return Failure{Reason::malformed, "the GIF file changed while it was read"};
        return stream;
    }

    const std::shared_ptr<const ByteReader> reader_;
    const Bytes colors_;
    mutable HeldReader<Stream> stream_;
};

bool recognises(ByteView head) {
    const std::string_view start(reinterpret_cast<const char*>(head.data()),
                                 std::min<std::size_t>(head.size(), 6));
    return start == "GIF87a" || start == "GIF89a";
}

Result<std::unique_ptr<ImageDecoder>> open(std::shared_ptr<const ByteReader> reader) {
    std::unique_ptr<Stream> stream = TRY(Stream::open(reader));
    const Layout& layout = stream->layout();
    if (!formatOf(layout).isWithinLimits())
        return Failure{Reason::tooLarge, "the GIF picture has too many pixels"};
    return std::unique_ptr<ImageDecoder>(std::make_unique<Decoder>(std::move(reader), std::move(stream)));
}

} // namespace

const ImageCodec codec = {"GIF", recognises, open, [] { (void)installedFunctions(); }};

} // namespace kestrine::gif
