#include "_MyClasses/Class/ExifTag/ExifAccessor.h"
#include "_MyClasses/Class/ExifTag/ExifTagReader.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSFileHandle.h"

namespace kestrine {

namespace {

constexpr std::uint16_t orientationTag = 0x0112;

/// Lends a handle to a reader while it parses, and closes it whatever happens.
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

} // namespace

const NumberList* numberListOf(const TagValue* value) {
    if (!value)
        return nullptr;
    if (const auto* list = std::get_if<NumberList>(value))
        return list;
    throw NSException(NSInvalidArgumentException, "the tag's value is not a list of numbers");
}

std::optional<NSNumber> firstNumberOf(const TagValue* value) {
    const NumberList* list = numberListOf(value);
    if (!list || list->empty())
        return std::nullopt;
    return list->front();
}

TagDictionaryPointer ExifTagReader::tagDictionary() {
    if (tagDictionary_)
        return tagDictionary_;
    const auto handle = NSFileHandle::fileHandleForReadingAtPath(path_);
    if (!handle)
        return tagDictionary_ = std::make_shared<const TagDictionary>();
    const OpenHandle open(*this, *handle);
    if (std::optional<TagDictionary> tags = getTags())
        tagDictionary_ = std::make_shared<const TagDictionary>(std::move(*tags));
    return tagDictionary_;
}

IFDDictionaryPointer ExifTagReader::IFD0Dict() { return getSubDict(tagDictionary().get(), IFD0Name); }
IFDDictionaryPointer ExifTagReader::IFD1Dict() { return getSubDict(tagDictionary().get(), IFD1Name); }
IFDDictionaryPointer ExifTagReader::subIFDDict() { return getSubDict(tagDictionary().get(), exifSubIFDName); }

std::optional<NSNumber> ExifTagReader::imageDirectionNumber() {
    const TagDictionaryPointer tags = tagDictionary();
    return firstNumberOf(getTagData(tags.get(), IFD0Name, orientationTag));
}

} // namespace kestrine
