#include "_MyClasses/Class/ExifTag/ExifAccessor.h"
#include "_MyClasses/Class/ExifTag/ByteOrder.h"
#include "_MyClasses/Class/ExifTag/ExifQuestions.h"
#include "_MyClasses/Class/ExifTag/ExifTagReader.h"
#include "_MyClasses/Class/ExifTag/NumberText.h"
#include "_MyClasses/Class/ExifTag/TagMessage.h"
#include "platform/foundation/NSBundle.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSFileHandle.h"
#include "platform/host/FailureCollector.h"
#include "platform/imageio/PictureEngine.h"

#include <cmath>

namespace kestrine {

namespace {

constexpr std::uint16_t isoSpeedRatingsTag = 0x8827;
constexpr std::uint16_t digitalZoomRatioTag = 0xa404;

constexpr double squareRootOf2 = 1.4142135623730951;
/// The ISO speed at which the APEX speed value is 0.
constexpr double isoOfSpeedValue0 = 3.125;
/// Cameras store a larger number when they do not know the zoom ratio.
constexpr std::int32_t maxZoomNumber = 10000;

/// Gives a reader a handle while it parses; always closes the handle.
class OpenHandle {
public:
    OpenHandle(ExifTagReader& reader, NSFileHandle& handle) : reader_(reader), handle_(handle) {
        reader_.setFileHandle(&handle_);
    }
    ~OpenHandle() {
        reader_.setFileHandle(nullptr);
        handle_.closeFile();
    }
    OpenHandle(const OpenHandle&) = delete;
    OpenHandle& operator=(const OpenHandle&) = delete;

private:
    ExifTagReader& reader_;
    NSFileHandle& handle_;
};

const TagValue* valueIn(const IFDDictionaryPointer& directory, std::uint16_t tag) {
    if (!directory)
        return nullptr;
    const auto value = directory->find(keyForTag(tag));
    return value == directory->end() ? nullptr : &value->second;
}

/// Null for null (nil); raises when the value is not a list.
const NumberList* numberListOf(const TagValue* value) {
    if (!value)
        return nullptr;
    if (const auto* list = std::get_if<NumberList>(value))
        return list;
    throw NSException(NSInvalidArgumentException, "the tag's value is not a list of numbers");
}

const NSNumber& elementOf(const NumberList& list, std::size_t index) {
    if (index < list.size())
        return list[index];
    throw NSException(NSRangeException, "the list of numbers has no element " + std::to_string(index));
}

// Rules of the value accessors.

/// Null for a missing value and for an empty list.
const NumberList* numbersOf(const TagValue* value) {
    const NumberList* list = numberListOf(value);
    return list && !list->empty() ? list : nullptr;
}

StoredValue raw(ExifTagReader&, const TagValue* value) { return value; }

OptionalNumber first(ExifTagReader&, const TagValue* value) {
    const NumberList* list = numbersOf(value);
    return list ? OptionalNumber(list->front()) : std::nullopt;
}

OptionalNumber rational(ExifTagReader&, const TagValue* value) {
    return ExifTagReader::rationalNumber(numbersOf(value));
}

/// `base` to the power of the rational.
OptionalNumber apexPower(double base, const TagValue* value) {
    const NumberList* list = numbersOf(value);
    if (!list)
        return std::nullopt;
    return NSNumber(std::pow(base, double{ExifTagReader::rationalValue(list)}));
}

OptionalNumber apexAperture(ExifTagReader&, const TagValue* value) { return apexPower(squareRootOf2, value); }

OptionalNumber apexShutterSpeed(ExifTagReader&, const TagValue* value) { return apexPower(2.0, value); }

/// Brightness value plus speed value. A missing ISO speed counts as 0.
OptionalNumber apexBrightness(ExifTagReader& reader, const TagValue* value) {
    const NumberList* list = numbersOf(value);
    if (!list)
        return std::nullopt;
    const double brightness = ExifTagReader::rationalValue(list);
    const NumberList* speeds = numberListOf(valueIn(reader.subIFDDict(), isoSpeedRatingsTag));
    const float iso = speeds ? elementOf(*speeds, 0).floatValue() : 0.0f;
    return NSNumber(static_cast<float>(brightness + std::log2(double{iso} / isoOfSpeedValue0)));
}

// How the formatted display accessors convert a number.

NSString asIs(const NSNumber& number, const NSString& format) {
    return formattedNumber(format, double{number.floatValue()});
}

NSString reciprocal(const NSNumber& number, const NSString& format) {
    return formattedNumber(format, 1.0 / double{number.floatValue()});
}

/// Adding zero turns -0 into 0.
NSString integerPart(const NSNumber& number, const NSString& format) {
    return formattedNumber(format, std::trunc(double{number.floatValue()}) + 0.0);
}

NSString integerUnlessZero(const NSNumber& number, const NSString& format) {
    const std::int32_t integer = number.intValue();
    return integer == 0 ? notAvailable : formattedNumber(format, integer);
}

NSString decimalText(const NSNumber& number, const NSString&) {
    return NSString::fromUTF8(number.stringValue());
}

} // namespace

TagDictionaryPointer ExifTagReader::tagDictionary() {
    if (tagDictionary_ == nullptr)
        tagDictionary_ = file_ != nullptr ? tagsHere() : tagsFromEngine();
    return tagDictionary_;
}

TagDictionaryPointer ExifTagReader::tagsHere() {
    const auto handle = NSFileHandle::fileHandleWithReader(file_);
    const OpenHandle open(*this, *handle);
    std::optional<TagDictionary> tags = getTags();
    return tags ? std::make_shared<const TagDictionary>(std::move(*tags)) : nullptr;
}

TagDictionaryPointer ExifTagReader::tagsFromEngine() {
    const auto handle = NSFileHandle::fileHandleForReadingAtPath(path_);
    if (!handle)
        return std::make_shared<const TagDictionary>();
    const Result<Bytes> answer = PictureEngine::current().answer(handle->reader(), tagsOf);
    const std::optional<ReadTags> read = answer ? readTagsIn(*answer) : std::nullopt;
    if (!read) {
        noteFailure(answer ? decoderCrash() : answer.failure());
        return nullptr;
    }
    app1Offset_ = read->app1Offset;
    return read->tags;
}

IFDDictionaryPointer ExifTagReader::IFD0Dict() { return getSubDict(tagDictionary().get(), IFD0Name); }
IFDDictionaryPointer ExifTagReader::IFD1Dict() { return getSubDict(tagDictionary().get(), IFD1Name); }
IFDDictionaryPointer ExifTagReader::subIFDDict() { return getSubDict(tagDictionary().get(), exifSubIFDName); }

float ExifTagReader::rationalValue(const NumberList* list) {
    return list ? elementOf(*list, 0).floatValue() / elementOf(*list, 1).floatValue() : 0.0f;
}

OptionalNumber ExifTagReader::rationalNumber(const NumberList* list) {
    return list ? OptionalNumber(NSNumber(rationalValue(list))) : std::nullopt;
}

OptionalString ExifTagReader::rationalValue(const NumberList* list, const NSString& format) {
    return list ? OptionalString(formattedNumber(format, double{rationalValue(list)})) : std::nullopt;
}

NSString ExifTagReader::localizedText(const NSString& key) const {
    NSBundle& bundle = bundle_ ? *bundle_ : NSBundle::mainBundle();
    return bundle.localizedString(key, u"", u"ExifTag");
}

NSString ExifTagReader::stringValueForKey(const NSString& key, const OptionalNumber& value) const {
    return localizedText(key + NSString::fromUTF8(std::to_string(value ? value->intValue() : 0)));
}

#define VALUE(name, directory, tag, rule, Kind)                                                              \
    Kind ExifTagReader::name() { return rule(*this, valueIn(directory##Dict(), tag)); }
#define FORMATTED(name, valueAccessor, format, valueFormatted)                                               \
    NSString ExifTagReader::name() {                                                                         \
        const OptionalNumber number = valueAccessor();                                                       \
        return number ? valueFormatted(*number, u"" format) : notAvailable;                                  \
    }
#define LOCALIZED(name, valueAccessor, key)                                                                  \
    NSString ExifTagReader::name() {                                                                         \
        const OptionalNumber number = valueAccessor();                                                       \
        return number ? stringValueForKey(u"" key, number) : notAvailable;                                   \
    }
#include "_MyClasses/Class/ExifTag/ExifAccessorTable.h"

/// `digitalZoomRatio`: the ratio as two numbers, not reduced; the localized "Unused" without zoom.
NSString ExifTagReader::digitalZoomRatio() {
    const NumberList* list = numberListOf(valueIn(subIFDDict(), digitalZoomRatioTag));
    if (!list)
        return notAvailable;
    const NSNumber& zoomed = elementOf(*list, 0);
    const NSNumber& whole = elementOf(*list, 1);
    if (zoomed.intValue() > maxZoomNumber || whole.intValue() > maxZoomNumber)
        return notAvailable;
    if (zoomed.intValue() == 0 || zoomed.doubleValue() == whole.doubleValue())
        return localizedText(u"Unused");
    return NSString::fromUTF8(zoomed.stringValue() + "/" + whole.stringValue());
}

} // namespace kestrine
