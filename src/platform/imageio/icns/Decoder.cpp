// Reads the largest picture of ICNS files.

#include "platform/host/BigEndian.h"
#include "platform/imageio/Codecs.h"
#include "platform/imageio/PartReader.h"
#include "platform/imageio/icns/StoredPixels.h"

#include <algorithm>
#include <array>

namespace kestrine::icns {

namespace {

/// A picture that can be shown.
struct Candidate {
    Element element;
    const ImageCodec* codec; ///< of a picture that is a file; null for others
    std::uint64_t pixels;
};

/// nullopt for masks.
std::optional<Candidate> candidateFor(const ByteReader& reader, const Element& element) {
    if (element.type->kind == Kind::mask)
        return std::nullopt;
    Candidate candidate{element, nullptr, std::uint64_t{element.type->width} * element.type->height};
    std::array<std::uint8_t, 24> head{};
    if (element.type->kind != Kind::file || reader.readAt(element.offset, head) != head.size())
        return candidate;
    if (jp2::codec.recognises(head)) {
        candidate.codec = &jp2::codec;
    } else if (png::codec.recognises(head)) {
        candidate.codec = &png::codec;
        candidate.pixels =
            bigEndian(ByteView(head).subspan(16, 4)) * bigEndian(ByteView(head).subspan(20, 4));
    }
    return candidate;
}

/// The one with most pixels; among equals the one whose kind has more colours, then the first.
std::optional<Candidate> largest(const ByteReader& reader, const std::vector<Element>& elements,
                                 bool withJPEG2000) {
    std::optional<Candidate> best;
    for (const Element& element : elements) {
        const std::optional<Candidate> candidate = candidateFor(reader, element);
        if (!candidate || (candidate->codec == &jp2::codec && !withJPEG2000))
            continue;
        if (!best || candidate->pixels > best->pixels
            || (candidate->pixels == best->pixels && element.type->kind > best->element.type->kind))
            best = candidate;
    }
    return best;
}

/// A picture in memory. It is small and therefore decoded at once.
class Decoder final : public ImageDecoder {
public:
    explicit Decoder(PixelBuffer pixels) : pixels_(std::make_shared<const PixelBuffer>(std::move(pixels))) {
        frames_.push_back({.format = pixels_->format});
    }

    Result<RowSourcePointer> rows(std::size_t, int) const override { return rowsOfPixels(pixels_); }

private:
    const std::shared_ptr<const PixelBuffer> pixels_;
};

bool recognises(ByteView head) { return head.size() >= 8 && bigEndian(head.first(4)) == fourCC("icns"); }

Result<std::unique_ptr<ImageDecoder>> openLargest(const std::shared_ptr<const ByteReader>& reader,
                                                  const std::vector<Element>& elements, bool withJPEG2000) {
    const std::optional<Candidate> best = largest(*reader, elements, withJPEG2000);
    if (!best)
        return Failure{Reason::unsupported, "the icon holds no picture in a supported form"};
    if (best->codec != nullptr)
        return best->codec->open(readerOfPart(reader, best->element.offset, best->element.length));
    PixelBuffer pixels = TRY(decodeStored(*reader, best->element, elements));
    return std::unique_ptr<ImageDecoder>(std::make_unique<Decoder>(std::move(pixels)));
}

/// If the largest picture is a JPEG 2000 file that cannot be decoded here, the icon shows the largest of the
/// others.
Result<std::unique_ptr<ImageDecoder>> open(std::shared_ptr<const ByteReader> reader) {
    std::array<std::uint8_t, 4> length{};
    reader->readAt(4, length);
    if (reader->size() < bigEndian(length))
        return Failure{Reason::truncated, "the icon is shorter than it says"};
    const std::vector<Element> elements = readElements(*reader);
    Result<std::unique_ptr<ImageDecoder>> decoder = openLargest(reader, elements, true);
    if (!decoder && decoder.failure().reason == Reason::unsupported)
        if (Result<std::unique_ptr<ImageDecoder>> other = openLargest(reader, elements, false))
            return other;
    return decoder;
}

} // namespace

const ImageCodec codec = {"ICNS", recognises, open, [] { jp2::codec.openLibraries(); }};

} // namespace kestrine::icns
