#include "_MyClasses/Class/ExifTag/ExifOrientation.h"

#include "_MyClasses/Class/ExifTag/ExifTagReader.h"
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

/// One byte: the orientation.
Result<Bytes> orientationOf(const std::shared_ptr<const ByteReader>& file) {
    return Bytes{static_cast<std::uint8_t>(orientationIn(*ExifTagReader::initWithFile(file)))};
}

} // namespace

int exifOrientation(const PictureFile& file) {
    if (!file.path || !ExifTagReader::acceptsName(*file.path))
        return 0;
    if (file.opened == nullptr)
        return orientationIn(*ExifTagReader::initWithPath(*file.path));
    const Result<Bytes> answer = file.opened->answer(orientationOf);
    return answer && answer->size() == 1 ? answer->front() : 0;
}

} // namespace kestrine
