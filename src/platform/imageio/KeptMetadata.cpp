#include "platform/imageio/KeptMetadata.h"

#include "platform/host/BigEndian.h"
#include "platform/host/FourCC.h"
#include "platform/imageio/Codecs.h"
#include "platform/imageio/ForwardReader.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace kestrine {

namespace {

/// The answer is one byte of these.
constexpr std::uint8_t hasOther = 1, hasExif = 2;
/// EXIF of which this selection keeps everything.
constexpr std::uint8_t isKeptBy(ExifSelection selection) {
    return static_cast<std::uint8_t>(4U << static_cast<unsigned>(selection));
}
constexpr std::array selections = {ExifSelection::camera, ExifSelection::withoutOwner, ExifSelection::rights};

/// Reads a file from the front.
class Walk {
public:
    explicit Walk(const std::shared_ptr<const ByteReader>& file) : input_(file, 0, bufferBytes) {}

    /// The next bytes as a number; nullopt at the end of the file.
    std::optional<std::uint32_t> number(std::size_t bytes) {
        std::array<std::uint8_t, 4> read{};
        const std::span<std::uint8_t> wanted = std::span(read).first(bytes);
        if (input_.read(wanted) != bytes)
            return std::nullopt;
        return static_cast<std::uint32_t>(bigEndian(wanted));
    }

    /// Whether these bytes come next, which stay.
    bool isAt(std::string_view expected) {
        const std::uint64_t here = input_.offset();
        std::array<std::uint8_t, 16> read{};
        const std::size_t count = input_.read(std::span(read).first(expected.size()));
        input_.moveTo(here);
        return count == expected.size() && std::equal(expected.begin(), expected.end(), read.begin());
    }

    void skip(std::uint64_t bytes) { input_.moveTo(input_.offset() + bytes); }

    /// Skips the coded samples of a JPEG and returns the marker after them; nullopt at the end of the file.
    std::optional<std::uint32_t> markerAfterSamples() {
        constexpr int escaped = 0x00, firstRestart = 0xd0, lastRestart = 0xd7, fill = 0xff;
        for (int byte = input_.next(), last = 0; byte >= 0; last = byte, byte = input_.next())
            if (last == fill && byte != escaped && byte != fill
                && (byte < firstRestart || byte > lastRestart))
                return 0xff00U | static_cast<unsigned>(byte);
        return std::nullopt;
    }

private:
    static constexpr std::size_t bufferBytes = std::size_t{1} << 16;

    ForwardReader input_;
};

/// The segments of a JPEG file, one after another.
class Segments {
public:
    explicit Segments(Walk& walk) : walk_(walk) {}

    /// Whether the current segment describes only pixels, or belongs to the first EXIF block; decoders
    /// deliver no further ones. `length` is the length field, which counts itself and was read.
    bool isUsual(std::uint32_t marker, std::uint32_t length) {
        using namespace std::string_view_literals;
        constexpr std::uint32_t app0 = 0xffe0, app1 = 0xffe1, app2 = 0xffe2, app14 = 0xffee;
        constexpr std::uint32_t lengthWithoutThumbnail = 16;
        if (marker == app0)
            return walk_.isAt("JFIF\0"sv) && length == lengthWithoutThumbnail;
        if (marker == app1 && (walk_.isAt("Exif\0\0MM"sv) || walk_.isAt("Exif\0\0II"sv)))
            return ++exifBlocks_ == 1;
        if (marker == app1)
            return exifBlocks_ == 1 && walk_.isAt("Exif\0\0"sv);
        if (marker == app2)
            return walk_.isAt("ICC_PROFILE\0"sv);
        return marker == app14 || marker < app0; // the rest is data of applications, and comments
    }

private:
    Walk& walk_;
    int exifBlocks_ = 0;
};

/// Data after the picture count too, such as further pictures and films.
bool hasOtherInJPEG(const std::shared_ptr<const ByteReader>& file) {
    constexpr std::uint32_t startOfScan = 0xffda, endOfImage = 0xffd9;
    Walk walk(file);
    Segments segments(walk);
    walk.skip(2);
    std::optional<std::uint32_t> marker = walk.number(2);
    while (marker && *marker != endOfImage) {
        const auto length = walk.number(2);
        if (!length || *length < 2 || !segments.isUsual(*marker, *length))
            return true;
        walk.skip(*length - 2);
        marker = *marker == startOfScan ? walk.markerAfterSamples() : walk.number(2);
    }
    return !marker || walk.number(1);
}

/// Data after the picture count too, and so does an eXIf chunk other than `exif`, such as a second one.
bool hasOtherInPNG(const std::shared_ptr<const ByteReader>& file, ByteView exif) {
    constexpr std::array usual = {fourCC("IHDR"), fourCC("PLTE"), fourCC("IDAT"), fourCC("tRNS"),
                                  fourCC("gAMA"), fourCC("cHRM"), fourCC("sRGB"), fourCC("iCCP"),
                                  fourCC("sBIT"), fourCC("pHYs"), fourCC("bKGD")};
    bool mayHaveExif = !exif.empty();
    Walk walk(file);
    walk.skip(8);
    while (const auto length = walk.number(4)) {
        const auto name = walk.number(4);
        if (name == fourCC("IEND"))
            return !walk.number(4) || walk.number(1); // after its checksum
        const bool isExif = name == fourCC("eXIf") && mayHaveExif && *length == exif.size();
        mayHaveExif = mayHaveExif && !isExif;
        if (!name || (!isExif && std::ranges::find(usual, *name) == usual.end()))
            return true;
        walk.skip(std::uint64_t{*length} + 4);
    }
    return true;
}

/// `exif` is the block that the decoder delivers.
bool hasOtherIn(const std::shared_ptr<const ByteReader>& file, const ImageCodec& codec, ByteView exif) {
    if (&codec == &jpeg::codec)
        return hasOtherInJPEG(file);
    return &codec != &png::codec || hasOtherInPNG(file, exif);
}

} // namespace

Result<Bytes> metadataOf(const std::shared_ptr<const ByteReader>& file) {
    const auto [decoder, codec] = TRY(openWithKnownCodec(file));
    const Bytes exif = TRY(decoder->exif());
    std::uint8_t found = hasOtherIn(file, *codec, exif) ? hasOther : 0;
    if (!exif.empty())
        found |= hasExif;
    for (const ExifSelection selection : selections)
        if (keepsWholeExif(exif, selection))
            found |= isKeptBy(selection);
    return Bytes{found};
}

bool holdsNoMoreThan(const std::optional<ExifSelection>& selection, ByteView answer) {
    if (answer.size() != 1 || (answer.front() & hasOther) != 0)
        return false;
    const bool mayHaveExif = selection && (answer.front() & isKeptBy(*selection)) != 0;
    return (answer.front() & hasExif) == 0 || mayHaveExif;
}

} // namespace kestrine
