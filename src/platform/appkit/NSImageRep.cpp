#include "platform/appkit/NSImageRep.h"

#include "platform/foundation/NSNumber.h"
#include "platform/host/FailureCollector.h"
#include "platform/imageio/PictureEngine.h"

namespace kestrine {

namespace {

constexpr double pointsAnInch = 72;

NSSize pointsOf(const FrameDescription& frame) {
    return {static_cast<float>(frame.format.width * pointsAnInch / frame.resolution.horizontal),
            static_cast<float>(frame.format.height * pointsAnInch / frame.resolution.vertical)};
}

Object dataOrNil(Result<Bytes> bytes) {
    if (!bytes || bytes->empty())
        return nullptr;
    return std::make_shared<NSData>(std::move(*bytes));
}

template <class T>
std::shared_ptr<const T> valueOf(const ImageProperties& properties, const NSString& name) {
    const auto entry = properties.find(name);
    return entry == properties.end() ? nullptr : std::dynamic_pointer_cast<const T>(entry->second);
}

ByteView bytesOf(const std::shared_ptr<const NSData>& data) {
    return data == nullptr ? ByteView() : data->bytes();
}

template <class Sample>
void multiplyByAlpha(PixelBuffer& pixels) {
    constexpr std::uint64_t full = static_cast<Sample>(~Sample{0});
    const std::size_t channels = pixels.format.channels();
    if (!pixels.format.hasAlpha)
        return;
    auto* sample = reinterpret_cast<Sample*>(pixels.bytes.data());
    for (std::uint64_t left = pixels.format.pixels(); left > 0; --left, sample += channels)
        for (std::size_t c = 0; c + 1 < channels; ++c)
            sample[c] =
                static_cast<Sample>((sample[c] * std::uint64_t{sample[channels - 1]} + full / 2) / full);
}

/// Calls `make` with what the properties and the rules ask for, and returns its result.
template <class Make>
auto withOutput(const NSBitmapImageRep& bitmap, FileType type, const ImageProperties& properties,
                const EncodingRules& rules, const Make& make) {
    const auto compression = valueOf<NSNumber>(properties, NSImageCompressionFactor);
    const auto dither = valueOf<NSNumber>(properties, NSImageDitherTransparency);
    const auto profileData = valueOf<NSData>(properties, NSImageColorSyncProfileData);
    const auto exif = valueOf<NSData>(properties, NSImageEXIFData);
    const auto colorTable = valueOf<NSData>(properties, NSImageRGBColorTable);

    const std::optional<ColorProfile> profile =
        profileData == nullptr ? std::nullopt
                               : ColorProfile::fromICC(profileData->bytes(), bitmap.picture().format().model);
    Output output{type, {}};
    output.options.quality = compression == nullptr ? 0 : static_cast<double>(compression->floatValue());
    output.options.ditherTransparency = dither != nullptr && dither->boolValue();
    output.options.resolution = {pointsAnInch * bitmap.pixelsWide() / bitmap.size().width,
                                 pointsAnInch * bitmap.pixelsHigh() / bitmap.size().height};
    output.options.profile = profile ? &*profile : nullptr;
    output.options.exif = bytesOf(exif);
    output.options.colorTable = bytesOf(colorTable);
    output.kept.profile = valueOf<PropertyOfSource>(properties, NSImageColorSyncProfileData) != nullptr;
    if (const auto ofSource = valueOf<PropertyOfSource>(properties, NSImageEXIFData))
        output.kept.exif = ofSource->source;
    output.kept.exifSelection = rules.exif;
    output.maxBytes = rules.maxBytes;
    output.options.isLossless = rules.isLossless;
    output.options.isProgressive = rules.isProgressive;
    output.options.effort = rules.effort;
    return make(output);
}

} // namespace

std::vector<std::shared_ptr<NSBitmapImageRep>>
NSBitmapImageRep::imageRepsWithContentsOfFile(const NSString& path) {
    const Result<std::shared_ptr<Source>> source = openPicture(path.utf8());
    if (source)
        return imageRepsWithSource(*source);
    noteFailure(source.failure());
    return {};
}

std::vector<std::shared_ptr<NSBitmapImageRep>>
NSBitmapImageRep::imageRepsWithSource(const std::shared_ptr<Source>& source) {
    std::vector<std::shared_ptr<NSBitmapImageRep>> reps;
    for (std::size_t frame = 0; frame < source->frames().size(); ++frame)
        reps.push_back(std::make_shared<NSBitmapImageRep>(Picture{source, frame, {}},
                                                          pointsOf(source->frames()[frame])));
    return reps;
}

Object NSBitmapImageRep::valueForProperty(const NSString& name) const {
    if (name == NSImageColorSyncProfileData)
        return dataOrNil(picture().source->property(picture(), PictureProperty::profile));
    if (!picture().steps.empty())
        return nullptr; // the others belong to the file, not to pictures drawn from it
    if (name == NSImageEXIFData)
        return dataOrNil(picture().source->property(picture(), PictureProperty::exif));
    if (name == NSImageRGBColorTable)
        return dataOrNil(picture().source->property(picture(), PictureProperty::colorTable));
    return nullptr;
}

std::shared_ptr<const NSData> NSBitmapImageRep::representationUsingType(FileType type,
                                                                        const ImageProperties& properties,
                                                                        const EncodingRules& rules) const {
    Result<Bytes> file = withOutput(*this, type, properties, rules,
                                    [this](const Output& output) { return render(picture(), output); });
    if (!file) {
        noteFailure(file.failure());
        return nullptr;
    }
    return std::make_shared<const NSData>(std::move(*file));
}

bool NSBitmapImageRep::writeRepresentation(int file, FileType type, const ImageProperties& properties,
                                           const EncodingRules& rules) const {
    const Result<void> written = withOutput(*this, type, properties, rules, [&](const Output& output) {
        return renderInto(file, picture(), output);
    });
    if (!written)
        noteFailure(written.failure());
    return written.ok();
}

std::shared_ptr<const NSData> NSBitmapImageRep::bitmapData() const {
    Result<PixelBuffer> pixels = readPixels(picture());
    if (!pixels) {
        noteFailure(pixels.failure());
        return nullptr;
    }
    if (pixels->format.depth == SampleDepth::bits8)
        multiplyByAlpha<std::uint8_t>(*pixels);
    else
        multiplyByAlpha<std::uint16_t>(*pixels);
    return std::make_shared<const NSData>(std::move(pixels->bytes));
}

} // namespace kestrine
