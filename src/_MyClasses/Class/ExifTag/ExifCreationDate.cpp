// Sets a file's creation date to the date on which the picture was taken.
#include "_MyClasses/Category/StringUtility.h"
#include "_MyClasses/Class/ExifTag/ExifTagReader.h"
#include "platform/foundation/FileCreationDate.h"
#include "platform/foundation/LocalTime.h"
#include "platform/foundation/NSException.h"
#include "platform/host/FailureCollector.h"

namespace kestrine {

namespace {

/// Added when the camera stores no time zone. The sign is deliberate: 9 hours are subtracted, although a
/// stored time zone is added.
constexpr std::chrono::hours correctionWithoutZone{-9};

bool isEmpty(const TagValue& value) {
    const auto* text = std::get_if<NSString>(&value);
    const auto* bytes = std::get_if<ByteBlock>(&value);
    return text ? text->isEmpty() : bytes ? bytes->empty() : std::get<NumberList>(value).empty();
}

/// Nil for a missing or empty value; raises for any other value that is not a string.
OptionalString textOf(StoredValue value) {
    if (!value || isEmpty(*value))
        return std::nullopt;
    if (const auto* text = std::get_if<NSString>(value))
        return *text;
    throw NSException(NSInvalidArgumentException, "the tag's value is not a string");
}

/// The EXIF date with dashes instead of colons; nil unless a blank separates date and time.
OptionalString withDashes(const NSString& text) {
    const OptionalString day = StringUtility::substringTo(text, u" ");
    const OptionalString time = StringUtility::substringFrom(text, u" ");
    if (!day || !time)
        return std::nullopt;
    return *StringUtility::replaceStringFrom(*day, u":", u"-") + u" " + *time;
}

} // namespace

OptionalDate ExifTagReader::creationDateWithPath(const NSString& path) {
    const auto reader = initWithPath(path);
    return reader ? reader->creationDate() : std::nullopt;
}

OptionalDate ExifTagReader::creationDate() {
    const OptionalString text = textOf(dateTimeOriginal());
    return text ? dateFromText(*text) : std::nullopt;
}

OptionalDate ExifTagReader::correctedCreationDate() {
    const OptionalString text = textOf(dateTimeOriginal());
    if (!text)
        return std::nullopt;
    const OptionalString parsable = withDashes(*text);
    const OptionalDate date = parsable ? dateFromText(*parsable) : std::nullopt;
    const OptionalNumber zone = timeZoneOffset();
    if (!date)
        return std::nullopt;
    return *date + (zone ? std::chrono::hours(zone->shortValue()) : correctionWithoutZone);
}

void ExifTagReader::changeCreationDate() {
    const OptionalDate date = correctedCreationDate();
    if (!date)
        return;
    // The interface reports no failure: not every file system stores creation dates.
    if (const Result<void> set = setFileCreationDate(path().utf8(), *date); !set)
        noteFailure(set.failure());
}

void ExifTagReader::changeCreationDateWithPath(const NSString& path) {
    if (const auto reader = initWithPath(path))
        reader->changeCreationDate();
}

} // namespace kestrine
