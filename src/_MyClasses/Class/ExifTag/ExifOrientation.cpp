#include "_MyClasses/Class/ExifTag/ExifOrientation.h"

#include "_MyClasses/Class/ExifTag/ExifQuestions.h"
#include "_MyClasses/Class/ExifTag/ExifTagReader.h"
#include "platform/foundation/NSException.h"

#include <algorithm>

namespace kestrine {

namespace {

/// A number beyond one byte is no orientation.
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

FileQuestion orientationQuestionFor(const NSString& path) {
    return ExifTagReader::acceptsName(path) ? orientationOf : nullptr;
}

int exifOrientation(const PictureFile& file) {
    const FileQuestion question = file.path ? orientationQuestionFor(*file.path) : nullptr;
    if (question == nullptr)
        return 0;
    if (file.opened == nullptr)
        return orientationIn(*ExifTagReader::initWithPath(*file.path));
    const Result<Bytes> answer = file.opened->answer(question);
    return answer && answer->size() == 1 ? answer->front() : 0;
}

} // namespace kestrine
