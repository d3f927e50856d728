#include "_MyClasses/Class/ExifTag/ExifQuestions.h"

#include "_MyClasses/Class/ExifTag/ExifTagReader.h"
#include "_MyClasses/Class/ExifTag/TagMessage.h"
#include "platform/foundation/NSException.h"
#include "platform/imageio/exif/CarriedExif.h"
#include "platform/imageio/exif/ExifSegment.h"

#include <algorithm>
#include <array>

namespace kestrine {

namespace {

/// A number that does not fit in one byte is not an orientation.
int orientationIn(ExifTagReader& reader) {
    try {
        const auto orientation = reader.imageDirectionNumber();
        const int number = orientation ? orientation->intValue() : 0;
        return number == std::clamp(number, 0, 255) ? number : 0;
    } catch (const NSException&) {
        return 0;
    }
}

/// A TIFF structure, such as that of many raw files, is an EXIF block itself. Its directories are near one of
/// its ends, and files are read up to this length.
constexpr std::uint64_t maxTIFFBytes = std::uint64_t{256} << 20;

bool hasTIFFStructure(const ByteReader& file) {
    std::array<std::uint8_t, 4> head{};
    constexpr std::array<std::uint8_t, 4> littleEndian{'I', 'I', 42, 0}, bigEndian{'M', 'M', 0, 42};
    return file.readAt(0, head) == head.size() && (head == littleEndian || head == bigEndian);
}

struct FoundBlock {
    Bytes bytes;
    std::uint32_t width = 0, height = 0; ///< of the picture; 0 if it cannot be decoded
};

Result<FoundBlock> blockOf(const std::shared_ptr<const ByteReader>& file) {
    if (hasTIFFStructure(*file))
        return FoundBlock{TRY(file->readAll(std::min(file->size(), maxTIFFBytes)))};
    const std::unique_ptr<ImageDecoder> decoder = TRY(openImage(file));
    const RowFormat& picture = decoder->frames().front().format;
    return FoundBlock{TRY(decoder->exif()), picture.width, picture.height};
}

/// The block as the only content of a JPEG file.
Bytes jpegAround(const Bytes& block) {
    const std::size_t length = 2 + exifSegmentMark.size() + block.size(); // with the length itself
    Bytes file = {
        0xff, 0xd8, 0xff, 0xe1, static_cast<std::uint8_t>(length >> 8), static_cast<std::uint8_t>(length)};
    for (const char byte : exifSegmentMark)
        file.push_back(static_cast<std::uint8_t>(byte));
    file.insert(file.end(), block.begin(), block.end());
    return file;
}

} // namespace

Result<Bytes> orientationOf(const std::shared_ptr<const ByteReader>& file) {
    return Bytes{static_cast<std::uint8_t>(orientationIn(*ExifTagReader::initWithFile(file)))};
}

Result<Bytes> tagsOf(const std::shared_ptr<const ByteReader>& file) {
    const std::unique_ptr<ExifTagReader> reader = ExifTagReader::initWithFile(file);
    TagDictionaryPointer tags = reader->tagDictionary();
    return bytesOf(ReadTags{reader->app1Offset(), std::move(tags)});
}

Result<Bytes> allTagsOf(const std::shared_ptr<const ByteReader>& file) {
    if (ExifTagReader::initWithFile(file)->tagDictionary() != nullptr)
        return tagsOf(file);
    const FoundBlock block = TRY(blockOf(file));
    const Bytes rewritten = carriedExif(block.bytes, {block.width, block.height}, ExifSelection::all);
    return rewritten.empty() ? bytesOf(ReadTags{}) : tagsOf(readerOfBytes(jpegAround(rewritten)));
}

} // namespace kestrine
