#include "_MyClasses/Class/ExifTag/ExifOrientation.h"

#include "_MyClasses/Class/ExifTag/ExifQuestions.h"
#include "_MyClasses/Class/ExifTag/ExifTagReader.h"
#include "platform/foundation/NSFileHandle.h"
#include "platform/host/FailureCollector.h"

namespace kestrine {

namespace {

Result<Bytes> answerFor(const PictureFile& file, FileQuestion question) {
    if (file.opened != nullptr)
        return file.opened->answer(question);
    const auto handle = NSFileHandle::fileHandleForReadingAtPath(*file.path);
    return handle ? PictureEngine::current().answer(handle->reader(), question) : Bytes();
}

} // namespace

FileQuestion orientationQuestionFor(const NSString& path) {
    return ExifTagReader::acceptsName(path) ? orientationOf : nullptr;
}

int exifOrientation(const PictureFile& file) {
    const FileQuestion question = file.path ? orientationQuestionFor(*file.path) : nullptr;
    if (question == nullptr)
        return 0;
    const Result<Bytes> answer = answerFor(file, question);
    if (!answer)
        noteFailure(answer.failure());
    return answer && answer->size() == 1 ? answer->front() : 0;
}

} // namespace kestrine
