#include "_MyClasses/Class/ExifTag/ExifQuestions.h"

#include "_MyClasses/Class/ExifTag/ExifTagReader.h"
#include "_MyClasses/Class/ExifTag/TagMessage.h"
#include "platform/foundation/NSException.h"

#include <algorithm>

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

} // namespace

Result<Bytes> orientationOf(const std::shared_ptr<const ByteReader>& file) {
    return Bytes{static_cast<std::uint8_t>(orientationIn(*ExifTagReader::initWithFile(file)))};
}

Result<Bytes> tagsOf(const std::shared_ptr<const ByteReader>& file) {
    const std::unique_ptr<ExifTagReader> reader = ExifTagReader::initWithFile(file);
    TagDictionaryPointer tags = reader->tagDictionary();
    return bytesOf(ReadTags{reader->app1Offset(), std::move(tags)});
}

} // namespace kestrine
