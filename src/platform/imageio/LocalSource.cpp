#include "platform/imageio/LocalSource.h"

#include "platform/coregraphics/ProfileName.h"
#include "platform/host/process/MemoryBudget.h"
#include "platform/imageio/Plausibility.h"

#include <algorithm>

namespace kestrine {

namespace {

std::atomic<std::uint64_t> startedDecodes = 0;

class ClearRows final : public RowSource {
public:
    explicit ClearRows(const RowFormat& format) : RowSource(format) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        std::ranges::fill(row, std::uint8_t{0});
        return {};
    }
};

class ClearCanvas final : public ImageDecoder {
public:
    ClearCanvas(std::uint32_t width, std::uint32_t height) {
        frames_.push_back({.format = {width, height, ColorModel::rgb, true, SampleDepth::bits8}});
    }

    Result<RowSourcePointer> rows(std::size_t frame, int) const override {
        return RowSourcePointer(std::make_unique<ClearRows>(frames_[frame].format));
    }
};

Bytes nameOfProfile(const std::optional<ColorProfile>& profile) {
    const std::string name = profile ? profileName(profile->bytes()) : "";
    return {name.begin(), name.end()};
}

struct KeptPixels {
    MemoryReservation memory;
    PixelBuffer pixels;
};

} // namespace

LocalSource::LocalSource(std::unique_ptr<ImageDecoder> decoder, std::shared_ptr<const ByteReader> file)
    : decoder_(std::move(decoder)), file_(std::move(file)), kept_(decoder_->frames().size()) {
    frames_ = decoder_->frames();
}

Result<std::shared_ptr<LocalSource>> LocalSource::open(std::shared_ptr<const ByteReader> file) {
    OpenedImage opened = TRY(orReadError(file.get(), openWithKnownCodec(file)));
    auto source = std::make_shared<LocalSource>(std::move(opened.decoder), std::move(file));
    source->codec_ = opened.codec;
    return source;
}

Result<std::shared_ptr<LocalSource>> LocalSource::open(std::shared_ptr<const ByteReader> file,
                                                       const ImageCodec& codec) {
    std::unique_ptr<ImageDecoder> decoder = TRY(orReadError(file.get(), openImage(file, codec)));
    auto source = std::make_shared<LocalSource>(std::move(decoder), std::move(file));
    source->codec_ = &codec;
    return source;
}

std::optional<Failure> LocalSource::damage() const {
    const bool isUnread = file_ != nullptr && file_->failure();
    return isUnread ? std::nullopt : decoder_->damage();
}

std::shared_ptr<Source> Source::clear(std::uint32_t width, std::uint32_t height) {
    return std::make_shared<LocalSource>(std::make_unique<ClearCanvas>(width, height), nullptr);
}

std::uint64_t LocalSource::decodesStarted() { return startedDecodes; }

Result<RowSourcePointer> LocalSource::decode(std::size_t frame, int halvings) const {
    ++startedDecodes;
    return decoder_->rows(frame, halvings);
}

Result<RowSourcePointer> LocalSource::drawnRows(std::size_t frame, const AxisMap& x, const AxisMap& y) const {
    ++startedDecodes;
    return decoder_->drawnRows(frame, x, y);
}

Result<RowSourcePointer> LocalSource::rows(std::size_t frame, int halvings) {
    if (!keepsPixels(frame))
        return decode(frame, halvings);
    const std::lock_guard lock(mutex_);
    if (kept_[frame] == nullptr)
        kept_[frame] = TRY(decodeToKeep(frame));
    return kept_[frame] ? rowsOfPixels(kept_[frame]) : decode(frame, 0);
}

Result<std::shared_ptr<const PixelBuffer>> LocalSource::decodeToKeep(std::size_t frame) const {
    const RowFormat& format = frames()[frame].format;
    if (!isWorthKeeping(format, isCanvas() ? 0 : file_->size()))
        return std::shared_ptr<const PixelBuffer>();
    std::optional<MemoryReservation> memory = budgetForKeptPictures().tryReserve(format.bytes());
    if (!memory)
        return std::shared_ptr<const PixelBuffer>();
    RowSourcePointer decoded = TRY(decode(frame, 0));
    PixelBuffer pixels = TRY(readAllRows(*decoded));
    const auto kept = std::make_shared<const KeptPixels>(KeptPixels{*std::move(memory), std::move(pixels)});
    return std::shared_ptr<const PixelBuffer>(kept, &kept->pixels);
}

bool LocalSource::holdsPixels(std::size_t frame) {
    const std::lock_guard lock(mutex_);
    return kept_[frame] != nullptr;
}

Result<Bytes> LocalSource::property(const Picture& picture, PictureProperty property) const {
    switch (property) {
    case PictureProperty::exif:
        return decoder_->exif();
    case PictureProperty::colorTable:
        return decoder_->colorTable();
    case PictureProperty::contents:
        return bytesOf(decoder_->contents());
    case PictureProperty::profileName:
        return nameOfProfile(picture.profile());
    default:
        const std::optional<ColorProfile> profile = picture.profile();
        return profile ? copied(profile->bytes()) : Bytes();
    }
}

} // namespace kestrine
