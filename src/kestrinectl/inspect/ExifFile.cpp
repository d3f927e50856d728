#include "kestrinectl/inspect/ExifFile.h"

#include "_MyClasses/Class/ExifTag/ExifQuestions.h"
#include "_MyClasses/Class/ExifTag/TagMessage.h"
#include "platform/host/FailureCollector.h"
#include "platform/imageio/PictureEngine.h"

namespace kestrine {

namespace {

/// Formats whose decoders need a library are asked as pictures; other files need not be complete pictures.
Result<Bytes> answerOf(const std::shared_ptr<const ByteReader>& file) {
    if (const Result<std::shared_ptr<Source>> picture = PictureEngine::current().open(file, allTagsOf))
        return (*picture)->answer(allTagsOf);
    return PictureEngine::current().answer(file, allTagsOf);
}

} // namespace

std::unique_ptr<ExifTagReader> exifReaderOf(const NSString& path, ExifReach reach) {
    if (reach == ExifReach::narrow)
        return ExifTagReader::initWithPath(path);
    const auto file = readerOfPath(path.utf8());
    if (!file) {
        noteFailure(file.failure());
        return nullptr;
    }
    const Result<Bytes> answer = answerOf(*file);
    const std::optional<ReadTags> read = answer ? readTagsIn(*answer) : std::nullopt;
    return read && read->tags != nullptr ? ExifTagReader::initWithTags(path, read->tags) : nullptr;
}

} // namespace kestrine
