#include "platform/imageio/TakenDate.h"

#include "platform/imageio/exif/ExifFacts.h"

namespace kestrine {

Result<Bytes> takenDateOf(const std::shared_ptr<const ByteReader>& file) {
    const std::unique_ptr<ImageDecoder> decoder = TRY(openImage(file));
    const Bytes block = TRY(decoder->exif());
    const std::string date = dateTakenIn(block);
    return Bytes(date.begin(), date.end());
}

} // namespace kestrine
