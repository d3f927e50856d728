// ExifTagReader: the EXIF tags of one JPEG file, parsed on first use.
// The reader is narrow on purpose: names in jpg or jpeg, big-endian data, an APP1 segment at one of two
// places, directories of up to 299 entries, entries of up to 300 values. It never writes to the file.
#pragma once

#include "_MyClasses/Class/ExifTag/ExifRecords.h"
#include "_MyClasses/Class/ExifTag/TagDictionary.h"
#include "platform/foundation/NSObject.h"

#include <chrono>
#include <optional>
#include <span>

namespace kestrine {

class NSBundle;
class NSFileHandle;

/// What an accessor answers: a value as it is stored, which lives as long as the reader, or null (nil); a
/// number or nil.
using StoredValue = const TagValue*;
using OptionalNumber = std::optional<NSNumber>;

/// A point in time, in whole seconds; nothing is nil.
using OptionalDate = std::optional<std::chrono::sys_seconds>;

/// Names of exceptions. The reader raises the first and the third; the others are for callers.
inline constexpr const char* ETRUnknownException = "ETRUnknownException";
inline constexpr const char* ETRLowMemoryException = "ETRLowMemoryException";
inline constexpr const char* ETRInvalidParameterException = "ETRInvalidParameterException";
inline constexpr const char* ETRFileFormatException = "ETRFileFormatException";
inline constexpr const char* ETRFileIOException = "ETRFileIOException";

/// For one thread at a time; different readers are independent. What a file handle raises when seeking or
/// reading fails goes through to the caller, with the file closed.
class ExifTagReader final : public NSObject {
public:
    /// `initWithPath:`. The file is not looked at yet. Null (nil) unless the path's extension is jpg or jpeg,
    /// in any case.
    static std::unique_ptr<ExifTagReader> initWithPath(const NSString& path);

    // Group accessor: the tag dictionary (ExifAccessor.cpp).

    /// `tagDictionary`. Nil when the file has no acceptable EXIF: then it is read again at the next call.
    /// Empty, and for good, when the file cannot be opened. Otherwise the same dictionary at every call.
    TagDictionaryPointer tagDictionary();
    /// `IFD0Dict`, `IFD1Dict`, `subIFDDict`: one directory of tagDictionary(), or nil.
    IFDDictionaryPointer IFD0Dict();
    IFDDictionaryPointer IFD1Dict();
    IFDDictionaryPointer subIFDDict();

    // Group accessor: values and texts (ExifAccessor.cpp). The accessors are the rows of ExifAccessorTable.h,
    // each named as its operation and without argument; the first that is called may parse the file.
    //
    // Value accessors answer nil for an absent tag. By their rule they take the value as it is stored (raw),
    // or a number from a list of numbers, nil when that is empty. A value of another kind raises
    // NSInvalidArgumentException, a list that is too short for a rational NSRangeException. Division by zero
    // gives infinity or NaN.
    //
    // Display accessors answer a text for people, "N/A" when their value is nil, and raise what it raises.

#define VALUE(name, directory, tag, rule, Kind) Kind name();
#define FORMATTED(name, valueAccessor, format, valueFormatted) NSString name();
#define LOCALIZED(name, valueAccessor, key) NSString name();
#define COMPUTED(name) NSString name();
#include "_MyClasses/Class/ExifTag/ExifAccessorTable.h"

    /// `rationalValue:`: the first number divided by the second, in single precision; 0 for nil. Raises
    /// NSRangeException when the list has less than two.
    static float rationalValue(const NumberList* list);
    /// `rationalNumber:`: the same as a number; nil for nil.
    static OptionalNumber rationalNumber(const NumberList* list);
    /// `rationalValue:withFormat:`: the same through a format of one floating number; nil for nil.
    static OptionalString rationalValue(const NumberList* list, const NSString& format);
    /// `stringValueForKey:value:`: the localized text for `key` followed by the number in decimal, such as
    /// flash16; that itself when the table has no such text. A nil number counts as 0.
    NSString stringValueForKey(const NSString& key, const OptionalNumber& value) const;
    /// The bundle whose table "ExifTag" has the texts, which is not owned; null for the program's own.
    void setBundle(NSBundle* bundle) { bundle_ = bundle; }

    // Group accessor: description (ExifAccessorDescription.cpp).

    /// `tagDescription`: a line for each camera value that is there, in four sections; the localized "Exif
    /// information is not available" without EXIF. Raises what the accessors raise.
    NSString tagDescription();
    /// `tagDescriptionWithPath:`: the same for a file; for a name that gets no reader the text about missing
    /// information. `bundle` as in setBundle().
    static NSString tagDescriptionWithPath(const NSString& path, NSBundle* bundle = nullptr);
    /// `tagDictionaryWithPath:`: nil for a file without acceptable EXIF, but empty for a name that gets no
    /// reader.
    static TagDictionaryPointer tagDictionaryWithPath(const NSString& path);

    // Group accessor: creation date (ExifCreationDate.cpp). Dates are read in local time. A DateTimeOriginal
    // that is no text raises NSInvalidArgumentException.

    /// `creationDateWithPath:`: DateTimeOriginal as it stands. Nil without a reader or a date.
    static OptionalDate creationDateWithPath(const NSString& path);
    /// DateTimeOriginal corrected by the camera's time zone, which is what changeCreationDate() sets: by
    /// timeZoneOffset() hours, or by -9 hours when there is none. Nil when there is no date.
    OptionalDate correctedCreationDate();
    /// `changeCreationDate`: sets the file's creation date to correctedCreationDate(), if any, as far as the
    /// file system keeps such a date (setFileCreationDate).
    void changeCreationDate();
    /// `changeCreationDateWithPath:`: the same for a file; nothing for a name that gets no reader.
    static void changeCreationDateWithPath(const NSString& path);

    // Parsing. These read from the handle that is open; without one there is nothing to read.

    /// `getTags`: a new dictionary, possibly empty; nothing when the file has no acceptable EXIF header.
    std::optional<TagDictionary> getTags();
    /// `getFileHeader:`: whether `header` could be filled from an APP1 "Exif" segment; app1Offset() is then
    /// set.
    bool getFileHeader(ExifFileHeader* header);
    /// `getTiffHeader:`: whether `header` (filled, numbers in host order) is "MM" with the number 42.
    bool getTiffHeader(TiffHeader* header);
    /// `registTagData:to:isIntel:`: adds the value of `entry` to `directory`, or nothing when its type is
    /// unknown or it has more than 300 values. `isIntel` says that values must be swapped for this
    /// little-endian host, that is, that the data is "MM". The handle ends where it was.
    void registTagData(const IfdEntry* entry, IFDDictionary& directory, bool isIntel);

    /// `getSubDict:subDictKey:`: the directory of that name, or nil.
    static IFDDictionaryPointer getSubDict(const TagDictionary* tags, std::string_view subDictKey);
    /// `getTagData:subDictKey:tag:`: the value, which lives as long as its directory, or null (nil).
    static const TagValue* getTagData(const TagDictionary* tags, std::string_view subDictKey,
                                      std::uint16_t tag);

    /// From behind the SOI marker to the APP1 segment: 0 or 18, as the last search left it.
    std::uint16_t app1Offset() const { return app1Offset_; }
    const NSString& path() const { return path_; }
    /// The handle to read from, which is not owned; null for none. tagDictionary() sets its own.
    void setFileHandle(NSFileHandle* handle) { fileHandle_ = handle; }

private:
    explicit ExifTagReader(NSString path) : path_(std::move(path)) {}

    /// File position of an offset in the TIFF data.
    std::uint64_t positionOf(std::uint32_t offset) const { return std::uint64_t{app1Offset_} + 12 + offset; }
    void seek(std::uint64_t position);
    /// The localized text for `key`, or `key` itself.
    NSString localizedText(const NSString& key) const;
    /// Fills `into` as far as the file goes and leaves the rest as it was.
    void read(std::span<std::uint8_t> into);
    template <class Record>
    void readRecord(Record& record);

    void readDirectory(TagDictionary& tags, std::string_view name, std::uint32_t offset);
    void readPointedDirectory(TagDictionary& tags, std::string_view parent, std::uint16_t pointerTag,
                              std::string_view name);
    std::optional<TagValue> valueOf(const IfdEntry& entry, bool isIntel);
    Bytes bytesAtOffset(const IfdEntry& entry, std::size_t size, bool isIntel);

    std::uint16_t app1Offset_ = 0;
    const NSString path_;
    TagDictionaryPointer tagDictionary_;
    NSFileHandle* fileHandle_ = nullptr;
    NSBundle* bundle_ = nullptr;
};

} // namespace kestrine
