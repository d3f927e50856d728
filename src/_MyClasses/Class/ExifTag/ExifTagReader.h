// ExifTagReader: the EXIF tags of one JPEG file, parsed on first use.
// The reader is narrow on purpose: names in jpg or jpeg, big-endian data, an APP1 segment at one of two
// places, directories of up to 299 entries, entries of up to 300 values. It never writes to the file.
#pragma once

#include "_MyClasses/Class/ExifTag/ExifRecords.h"
#include "_MyClasses/Class/ExifTag/TagDictionary.h"
#include "platform/foundation/NSObject.h"

#include <optional>
#include <span>

namespace kestrine {

class NSFileHandle;

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

    // Group accessor (ExifAccessor.cpp).

    /// `tagDictionary`. Nil when the file has no acceptable EXIF: then it is read again at the next call.
    /// Empty, and for good, when the file cannot be opened. Otherwise the same dictionary at every call.
    TagDictionaryPointer tagDictionary();
    /// `IFD0Dict`, `IFD1Dict`, `subIFDDict`: one directory of tagDictionary(), or nil.
    IFDDictionaryPointer IFD0Dict();
    IFDDictionaryPointer IFD1Dict();
    IFDDictionaryPointer subIFDDict();
    /// `imageDirectionNumber`: the first number of IFD0's Orientation; nothing when absent or empty. An
    /// Orientation stored as text or data raises NSInvalidArgumentException; a caller to whom that is no
    /// orientation catches it by this name.
    std::optional<NSNumber> imageDirectionNumber();

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
};

} // namespace kestrine
