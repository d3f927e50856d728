#include "platform/coregraphics/ColorLibrary.h"
#include "platform/imageio/Codecs.h"
#include "platform/imageio/OutputFormats.h"
#include "platform/imageio/Plausibility.h"

#include <algorithm>
#include <array>

namespace kestrine {

namespace {

/// No file has two signatures, so the most frequent formats come first. TGA, which has none, comes after
/// all others. Codecs that only open what another one leaves to them follow.
constexpr std::array codecs = {
    &jpeg::codec,     &png::codec,      &tiff::codec,        &gif::codec, &webp::codec, &bmp::codec,
    &heif::heicCodec, &heif::avifCodec, &pnm::codec,         &jxl::codec, &jp2::codec,  &psd::codec,
    &ico::codec,      &icns::codec,     &pcx::codec,         &qoi::codec, &sgi::codec,  &raw::codec,
    &svg::codec,      &tga::codec,      &svg::codecWithFonts};

} // namespace

Result<RowSourcePointer> ImageDecoder::drawnRows(std::size_t, const AxisMap&, const AxisMap&) const {
    return Failure{Reason::unsupported, "the picture cannot be drawn in other sizes"};
}

const ImageCodec* codecFor(const ByteReader& reader) {
    constexpr std::size_t usualHeadBytes = 64; // tell every format but SVG
    std::array<std::uint8_t, maxHeadBytes> buffer;
    for (const std::size_t length : {usualHeadBytes, maxHeadBytes}) {
        const ByteView head(buffer.data(), reader.readAt(0, std::span(buffer).first(length)));
        const auto found =
            std::ranges::find_if(codecs, [head](auto* codec) { return codec->recognises(head); });
        if (found != codecs.end())
            return *found;
    }
    return nullptr;
}

Result<const ImageCodec*> knownCodecFor(const ByteReader& reader) {
    const ImageCodec* codec = codecFor(reader);
    if (const std::optional<Failure> error = reader.failure())
        return *error;
    if (codec == nullptr)
        return Failure{Reason::unsupported, "the file is not in a known picture format"};
    return codec;
}

std::uint32_t numberOf(const ImageCodec& codec) {
    return static_cast<std::uint32_t>(std::ranges::find(codecs, &codec) - codecs.begin());
}

const ImageCodec* codecNumbered(std::uint32_t number) {
    return number < codecs.size() ? codecs[number] : nullptr;
}

std::uint32_t librariesOf(const ImageCodec& codec) {
    return codec.openLibraries == nullptr ? 0 : std::uint32_t{1} << numberOf(codec);
}

std::uint32_t librariesOf(const OutputFormat& format) {
    static_assert(std::size(codecs) + std::size_t{1} + static_cast<std::size_t>(lastFileType) <= 32);
    const std::size_t position = std::size(codecs) + static_cast<std::size_t>(format.type);
    return format.openLibraries == nullptr ? 0 : std::uint32_t{1} << position;
}

void openCommonLibraries() {
    (void)installedColorLibrary();
    png::openLibraries(); // PNG is what results become whose format is not written
}

void openLibraries(std::uint32_t chosen) {
    for (const ImageCodec* codec : codecs)
        if ((chosen & librariesOf(*codec)) != 0)
            codec->openLibraries();
    for (const OutputFormat& format : outputFormats())
        if ((chosen & librariesOf(format)) != 0)
            format.openLibraries();
}

Result<OpenedImage> openWithKnownCodec(const std::shared_ptr<const ByteReader>& reader) {
    const ImageCodec* codec = TRY(knownCodecFor(*reader));
    Result<std::unique_ptr<ImageDecoder>> decoder = openImage(reader, *codec);
    while (!decoder && decoder.failure().reason == Reason::otherFormat && codec->other != nullptr) {
        codec = codec->other;
        decoder = openImage(reader, *codec);
    }
    return OpenedImage{TRY(std::move(decoder)), codec};
}

Result<std::unique_ptr<ImageDecoder>> openImage(const std::shared_ptr<const ByteReader>& reader) {
    return TRY(openWithKnownCodec(reader)).decoder;
}

Result<std::unique_ptr<ImageDecoder>> openImage(std::shared_ptr<const ByteReader> reader,
                                                const ImageCodec& codec) {
    if (const auto& colors = installedColorLibrary(); !colors)
        return colors.failure();
    std::unique_ptr<ImageDecoder> decoder = TRY(codec.open(reader));
    for (const FrameDescription& frame : decoder->frames())
        TRY(checkPlausible(frame, reader->size()));
    return decoder;
}

} // namespace kestrine
