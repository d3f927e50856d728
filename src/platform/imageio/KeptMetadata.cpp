#include "platform/imageio/KeptMetadata.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace kestrine {

namespace {

/// The answer is one byte of these.
constexpr std::uint8_t hasOther = 1, hasExif = 2;
/// EXIF that this selection keeps as it is.
constexpr std::uint8_t isKeptBy(ExifSelection selection) {
    return static_cast<std::uint8_t>(4U << static_cast<unsigned>(selection));
}
constexpr std::array allSelections = {ExifSelection::camera, ExifSelection::withoutOwner,
                                      ExifSelection::rights, ExifSelection::all};

/// Reads a file from the front.
class Walk {
public:
    explicit Walk(const ByteReader& file) : file_(file) {}

    /// The next bytes as a number; nullopt at the end of the file.
    std::optional<std::uint32_t> number(std::size_t bytes) {
        std::array<std::uint8_t, 4> read{};
        if (file_.readAt(position_, std::span(read).first(bytes)) != bytes)
            return std::nullopt;
        position_ += bytes;
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < bytes; ++i)
            value = value << 8 | read[i];
        return value;
    }

    /// Whether these bytes come next, which stay.
    bool isAt(std::string_view expected) const {
        std::array<std::uint8_t, 16> read{};
        const std::size_t count = file_.readAt(position_, std::span(read).first(expected.size()));
        return count == expected.size() && std::equal(expected.begin(), expected.end(), read.begin());
    }

    void skip(std::uint64_t bytes) { position_ += bytes; }

private:
    const ByteReader& file_;
    std::uint64_t position_ = 0;
};

/// Whether the segment at hand describes only pixels, or is EXIF data.
bool isUsualSegment(std::uint32_t marker, const Walk& walk) {
    using namespace std::string_view_literals;
    constexpr std::uint32_t app0 = 0xffe0, app1 = 0xffe1, app2 = 0xffe2, app14 = 0xffee, comment = 0xfffe;
    if (marker == app0)
        return walk.isAt("JFIF\0"sv);
    if (marker == app1)
        return walk.isAt("Exif\0\0"sv);
    if (marker == app2)
        return walk.isAt("ICC_PROFILE\0"sv);
    return marker == app14 || (marker < app0 && marker != comment);
}

bool hasOtherInJPEG(const ByteReader& file) {
    constexpr std::uint32_t startOfScan = 0xffda;
    Walk walk(file);
    walk.skip(2);
    while (const auto marker = walk.number(2)) {
        const auto length = walk.number(2);
        if (*marker == startOfScan)
            return false;
        if (!length || *length < 2 || !isUsualSegment(*marker, walk))
            return true;
        walk.skip(*length - 2);
    }
    return true;
}

constexpr std::uint32_t chunkNamed(const char (&name)[5]) {
    std::uint32_t number = 0;
    for (int i = 0; i < 4; ++i)
        number = number << 8 | static_cast<std::uint8_t>(name[i]);
    return number;
}

bool hasOtherInPNG(const ByteReader& file) {
    constexpr std::array usual = {chunkNamed("IHDR"), chunkNamed("PLTE"), chunkNamed("IDAT"),
                                  chunkNamed("tRNS"), chunkNamed("gAMA"), chunkNamed("cHRM"),
                                  chunkNamed("sRGB"), chunkNamed("iCCP"), chunkNamed("sBIT"),
                                  chunkNamed("pHYs"), chunkNamed("bKGD"), chunkNamed("eXIf")};
    Walk walk(file);
    walk.skip(8);
    while (const auto length = walk.number(4)) {
        const auto name = walk.number(4);
        if (name == chunkNamed("IEND"))
            return false;
        if (!name || std::ranges::find(usual, *name) == usual.end())
            return true;
        walk.skip(std::uint64_t{*length} + 4);
    }
    return true;
}

bool hasOtherIn(const ByteReader& file, const ImageCodec& codec) {
    if (codec.name == "JPEG")
        return hasOtherInJPEG(file);
    return codec.name != "PNG" || hasOtherInPNG(file);
}

} // namespace

Result<Bytes> metadataOf(const std::shared_ptr<const ByteReader>& file) {
    const auto [decoder, codec] = TRY(openWithKnownCodec(file));
    const Bytes exif = TRY(decoder->exif());
    const RowFormat& format = decoder->frames().front().format;
    std::uint8_t found = hasOtherIn(*file, *codec) ? hasOther : 0;
    if (!exif.empty())
        found |= hasExif;
    for (const ExifSelection selection : allSelections)
        if (carriedExif(exif, format.width, format.height, false, selection) == exif)
            found |= isKeptBy(selection);
    return Bytes{found};
}

bool holdsNoMoreThan(const std::optional<ExifSelection>& selection, ByteView answer) {
    if (selection == ExifSelection::all)
        return true;
    if (answer.size() != 1 || (answer.front() & hasOther) != 0)
        return false;
    const bool mayHaveExif = selection && (answer.front() & isKeptBy(*selection)) != 0;
    return (answer.front() & hasExif) == 0 || mayHaveExif;
}

} // namespace kestrine
