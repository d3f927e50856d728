// Reads BMP files row by row: with indices, masks or 24 bits per pixel, uncompressed or run-length coded,
// stored from the top or from the bottom.

#include "platform/imageio/Codecs.h"
#include "platform/imageio/PartReader.h"
#include "platform/imageio/bmp/Rows.h"

#include <array>

namespace kestrine::bmp {

namespace {

class Decoder final : public ImageDecoder {
public:
    Decoder(std::shared_ptr<const ByteReader> reader, Header header)
        : reader_(std::move(reader)), header_(std::move(header)) {
        frames_.push_back({.format = header_.format(),
                           .profile = header_.profile,
                           .isUncompressed = !header_.isRunLength,
                           .storedBitsPerPixel = header_.bitsPerPixel});
    }

    Result<RowSourcePointer> rows(std::size_t, int) const override { return rowsOfBMP(reader_, header_); }

    Result<Bytes> colorTable() const override { return header_.palette; }

private:
    const std::shared_ptr<const ByteReader> reader_;
    const Header header_;
};

bool recognises(ByteView head) { return isBMP(head) || isBMPArray(head); }

/// The rest of an array of bitmaps is in the resolutions and colours of other screens.
Result<std::unique_ptr<ImageDecoder>> open(std::shared_ptr<const ByteReader> reader) {
    std::array<std::uint8_t, 32> head{};
    const bool isArray = isBMPArray(ByteView(head).first(reader->readAt(0, head)));
    if (isArray)
        reader = readerFrom(std::move(reader), arrayHeaderLength);
    Header header = TRY(readHeader(*reader));
    if (isArray && header.pixelOffset < arrayHeaderLength)
        return Failure{Reason::malformed, "the BMP has no place for its pixels"};
    if (isArray)
        header.pixelOffset -= arrayHeaderLength;
    if (header.format().pixels() == 0)
        return Failure{Reason::empty, "the BMP has no pixels"};
    if (!header.format().isWithinLimits())
        return Failure{Reason::tooLarge, "the BMP has too many pixels"};
    return std::unique_ptr<ImageDecoder>(std::make_unique<Decoder>(std::move(reader), std::move(header)));
}

} // namespace

const ImageCodec codec = {"BMP", recognises, open};

} // namespace kestrine::bmp
