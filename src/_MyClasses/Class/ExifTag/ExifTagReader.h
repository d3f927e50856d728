// ExifTagReader: the EXIF tags of a JPEG file, read on first use.
// The reader is deliberately limited: file names ending in jpg or jpeg, big-endian data, an APP1 segment at
// one of two positions, directories of up to 299 entries, entries of up to 300 values. It never writes to the
// file.
#pragma once

#include "_MyClasses/Class/ExifTag/ExifRecords.h"
#include "_MyClasses/Class/ExifTag/TagDictionary.h"
#include "platform/foundation/NSObject.h"
#include "platform/host/files/ByteReader.h"

#include <chrono>
#include <optional>
#include <span>

namespace kestrine {

class NSBundle;
class NSFileHandle;

/// A value as it is stored, owned by the reader; null is nil.
using StoredValue = const TagValue*;
using OptionalNumber = std::optional<NSNumber>;

/// A date in whole seconds; nullopt is nil.
using OptionalDate = std::optional<std::chrono::sys_seconds>;

/// Exception names. The reader raises only the first and the third.
inline constexpr const char* ETRUnknownException = "ETRUnknownException";
inline constexpr const char* ETRLowMemoryException = "ETRLowMemoryException";
inline constexpr const char* ETRInvalidParameterException = "ETRInvalidParameterException";
inline constexpr const char* ETRFileFormatException = "ETRFileFormatException";
inline constexpr const char* ETRFileIOException = "ETRFileIOException";

/// For one thread at a time; different readers are independent. Exceptions of the file handle, when seeking
/// or reading fails, reach the caller after the file is closed.
class ExifTagReader final : public NSObject {
public:
    /// `initWithPath:`. Does not open the file. Null (nil) unless the extension is jpg or jpeg, in upper or
    /// lower case.
    static std::unique_ptr<ExifTagReader> initWithPath(const NSString& path);
    /// A reader of a file that is already open. Its name may have any extension.
    static std::unique_ptr<ExifTagReader> initWithFile(std::shared_ptr<const ByteReader> file);
    /// A reader of the file at `path` that has read `tags`, which must not be nil, already.
    static std::unique_ptr<ExifTagReader> initWithTags(const NSString& path, TagDictionaryPointer tags);
    /// Whether initWithPath() accepts the path.
    static bool acceptsName(const NSString& path);

    // Group accessor: the tag dictionary (ExifAccessor.cpp).

    /// `tagDictionary`: the same dictionary at every call; empty when the file cannot be opened. Nil when the
    /// file has no EXIF data that this reader accepts; the next call then reads the file again. A file at a
    /// path is read by the current PictureEngine, whose failures are noted and count as no EXIF data.
    TagDictionaryPointer tagDictionary();
    /// `IFD0Dict`, `IFD1Dict`, `subIFDDict`: one directory of tagDictionary(), or nil.
    IFDDictionaryPointer IFD0Dict();
    IFDDictionaryPointer IFD1Dict();
    IFDDictionaryPointer subIFDDict();

    // Group accessor: values and display strings (ExifAccessor.cpp). The rows of ExifAccessorTable.h declare
    // the accessors; none has an argument. The first call of any accessor reads the file.
    //
    // Value accessors return nil when the tag is missing. The rule `raw` returns the stored value; the other
    // rules compute a number from a list of numbers, nil when the list is empty. A value that is not a list
    // raises NSInvalidArgumentException; a list that is too short for a rational raises NSRangeException.
    // Division by zero gives infinity or NaN.
    //
    // Display accessors return a string for people, "N/A" when the value is nil, and raise the same
    // exceptions.

#define VALUE(name, directory, tag, rule, Kind) Kind name();
#define FORMATTED(name, valueAccessor, format, valueFormatted) NSString name();
#define LOCALIZED(name, valueAccessor, key) NSString name();
#define COMPUTED(name) NSString name();
#include "_MyClasses/Class/ExifTag/ExifAccessorTable.h"

    /// `rationalValue:`: the first number divided by the second, in single precision; 0 for nil. Raises
    /// NSRangeException when the list has fewer than two numbers.
    static float rationalValue(const NumberList* list);
    /// `rationalNumber:`: the same as a number; nil for nil.
    static OptionalNumber rationalNumber(const NumberList* list);
    /// `rationalValue:withFormat:`: the same through a format string such as "%.1f"; nil for nil.
    static OptionalString rationalValue(const NumberList* list, const NSString& format);
    /// `stringValueForKey:value:`: the localized string for `key` followed by the number in decimal, such as
    /// flash16; the key itself when the table has no such string. Nil counts as 0.
    NSString stringValueForKey(const NSString& key, const OptionalNumber& value) const;
    /// The bundle with the strings table "ExifTag", not owned; null (the default) is the main bundle.
    void setBundle(NSBundle* bundle) { bundle_ = bundle; }

    // Group accessor: description (ExifAccessorDescription.cpp).

    /// `tagDescription`: one line per available value, in four sections; the localized "Exif information is
    /// not available" when tagDictionary() is nil. Raises the exceptions of the accessors.
    NSString tagDescription();
    /// `tagDescriptionWithPath:`: the same for a file; the string about missing information when
    /// initWithPath() returns nil. `bundle` as in setBundle().
    static NSString tagDescriptionWithPath(const NSString& path, NSBundle* bundle = nullptr);
    /// `tagDictionaryWithPath:`: tagDictionary() of the file; empty when initWithPath() returns nil.
    static TagDictionaryPointer tagDictionaryWithPath(const NSString& path);

    // Group accessor: creation date (ExifCreationDate.cpp). Dates are in local time. A DateTimeOriginal that
    // is not a string raises NSInvalidArgumentException.

    /// `creationDateWithPath:`: DateTimeOriginal without correction. Nil when there is no date, or when
    /// initWithPath() returns nil.
    static OptionalDate creationDateWithPath(const NSString& path);
    /// The same for the tags of this reader.
    OptionalDate creationDate();
    /// The date that changeCreationDate() sets: DateTimeOriginal plus timeZoneOffset() hours, or minus 9
    /// hours when there is no time zone. Nil when there is no date.
    OptionalDate correctedCreationDate();
    /// `changeCreationDate`: sets the file's creation date to correctedCreationDate(), if it is not nil and
    /// the file system can store it (setFileCreationDate).
    void changeCreationDate();
    /// `changeCreationDateWithPath:`: the same for a file; does nothing when initWithPath() returns nil.
    static void changeCreationDateWithPath(const NSString& path);

    // Parsing. These functions read from the file handle (setFileHandle); without one they read nothing.

    /// `getTags`: a new dictionary, possibly empty; nil when getFileHeader() or getTiffHeader() fails.
    std::optional<TagDictionary> getTags();
    /// `getFileHeader:`: finds the APP1 "Exif" segment, fills `header` and sets app1Offset(); false when
    /// there is none.
    bool getFileHeader(ExifFileHeader* header);
    /// `getTiffHeader:`: fills `header`, numbers in host order; false unless it is "MM" with the number 42.
    bool getTiffHeader(TiffHeader* header);
    /// `registTagData:to:isIntel:`: adds the value of `entry` to `directory`, unless its type is unknown or
    /// it has more than 300 values. Despite its name, `isIntel` is yes for big-endian data ("MM"), no for
    /// little-endian data. The handle's position stays the same.
    void registTagData(const IfdEntry* entry, IFDDictionary& directory, bool isIntel);

    /// `getSubDict:subDictKey:`: the directory of that name, or nil.
    static IFDDictionaryPointer getSubDict(const TagDictionary* tags, std::string_view subDictKey);
    /// `getTagData:subDictKey:tag:`: the value, owned by the directory, or null (nil).
    static const TagValue* getTagData(const TagDictionary* tags, std::string_view subDictKey,
                                      std::uint16_t tag);

    /// The offset of the APP1 segment from the end of the SOI marker, in bytes: 0 or 18, from the last
    /// getFileHeader().
    std::uint16_t app1Offset() const { return app1Offset_; }
    const NSString& path() const { return path_; }
    /// The handle to read from, not owned; null for none. tagDictionary() sets its own.
    void setFileHandle(NSFileHandle* handle) { fileHandle_ = handle; }

private:
    explicit ExifTagReader(NSString path) : path_(std::move(path)) {}

    /// The tags of file_, read in this process.
    TagDictionaryPointer tagsHere();
    /// The tags of the file at path_, read where the current engine decodes files.
    TagDictionaryPointer tagsFromEngine();

    /// The file position of an offset in the TIFF data.
    std::uint64_t positionOf(std::uint32_t offset) const { return std::uint64_t{app1Offset_} + 12 + offset; }
    void seek(std::uint64_t position);
    /// The localized string for `key`, or `key` itself.
    NSString localizedText(const NSString& key) const;
    /// Reads up to the size of `into`; at the end of the file the rest stays unchanged.
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
    std::shared_ptr<const ByteReader> file_; ///< null: the file at the path is opened
    TagDictionaryPointer tagDictionary_;
    NSFileHandle* fileHandle_ = nullptr;
    NSBundle* bundle_ = nullptr;
};

} // namespace kestrine
