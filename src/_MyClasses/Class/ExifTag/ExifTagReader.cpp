#include "_MyClasses/Class/ExifTag/ExifTagReader.h"
#include "_MyClasses/Class/ExifTag/ByteOrder.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSFileHandle.h"

#include <algorithm>
#include <new>

namespace kestrine {

namespace {

constexpr std::array<std::uint8_t, 2> startOfImage{0xff, 0xd8};
constexpr std::array<std::uint8_t, 2> app1Marker{0xff, 0xe1};
/// APP1 follows SOI directly, or after one segment of 18 bytes, the size of a plain JFIF APP0.
constexpr std::array<std::uint16_t, 2> app1Offsets{0, 18};

constexpr std::array<char, 2> bigEndianMark{'M', 'M'};
constexpr std::uint16_t tiffMagic = 42;

constexpr std::uint16_t exifPointerTag = 0x8769;
constexpr std::uint16_t makerNoteTag = 0x927c;
constexpr std::uint16_t interoperabilityPointerTag = 0xa005;

constexpr std::uint16_t maxDirectoryEntries = 299;

/// The six bytes as six characters. Only a lack of memory can make this fail.
NSString identifierText(const ExifFileHeader& header) {
    try {
        return std::u16string(header.identifier.begin(), header.identifier.end());
    } catch (const std::bad_alloc&) {
        throw NSException(ETRUnknownException,
                          "- [ExifFileReader getFileHeader:] NSString object could not allocated.");
    }
}

} // namespace

std::unique_ptr<ExifTagReader> ExifTagReader::initWithPath(const NSString& path) {
    return acceptsName(path) ? std::unique_ptr<ExifTagReader>(new ExifTagReader(path)) : nullptr;
}

std::unique_ptr<ExifTagReader> ExifTagReader::initWithFile(std::shared_ptr<const ByteReader> file) {
    std::unique_ptr<ExifTagReader> reader(new ExifTagReader(NSString()));
    reader->file_ = std::move(file);
    return reader;
}

std::unique_ptr<ExifTagReader> ExifTagReader::initWithTags(const NSString& path, TagDictionaryPointer tags) {
    std::unique_ptr<ExifTagReader> reader(new ExifTagReader(path));
    reader->tagDictionary_ = std::move(tags);
    return reader;
}

bool ExifTagReader::acceptsName(const NSString& path) {
    const NSString extension = path.pathExtension().lowercased();
    return extension == u"jpg" || extension == u"jpeg";
}

void ExifTagReader::seek(std::uint64_t position) {
    if (fileHandle_)
        fileHandle_->seekToFileOffset(position);
}

void ExifTagReader::read(std::span<std::uint8_t> into) {
    if (!fileHandle_)
        return;
    const Bytes data = fileHandle_->readDataOfLength(into.size());
    std::copy(data.begin(), data.end(), into.begin());
}

template <class Record>
void ExifTagReader::readRecord(Record& record) {
    read({reinterpret_cast<std::uint8_t*>(&record), sizeof record});
}

bool ExifTagReader::getFileHeader(ExifFileHeader* header) {
    if (!header)
        throw NSException(ETRInvalidParameterException,
                          "- [ExifFileReader getFileHeader:] Invalid parameter.");
    header->marker = {};
    header->length = 0;
    header->identifier[0] = 0;
    std::array<std::uint8_t, 2> firstMarker{};
    seek(0);
    read(firstMarker);
    if (firstMarker != startOfImage)
        return false;
    for (const std::uint16_t candidate : app1Offsets) {
        app1Offset_ = candidate;
        seek(std::uint64_t{app1Offset_} + startOfImage.size());
        readRecord(*header);
        const NSString identifier = identifierText(*header);
        if (header->marker == app1Marker && identifier == std::u16string(u"Exif\0\0", 6))
            return true;
    }
    return false;
}

bool ExifTagReader::getTiffHeader(TiffHeader* header) {
    if (!header)
        throw NSException(ETRInvalidParameterException,
                          "- [ExifFileReader getTiffHeader:] Invalid parameter.");
    *header = {};
    seek(positionOf(0));
    readRecord(*header);
    if (header->byteOrder == bigEndianMark) {
        convertFromBigEndian(header->magic);
        convertFromBigEndian(header->ifd0Offset);
        if (header->magic == tiffMagic)
            return true;
    }
    header->ifd0Offset = 0;
    return false;
}

std::optional<TagDictionary> ExifTagReader::getTags() {
    ExifFileHeader fileHeader{};
    TiffHeader tiffHeader{};
    if (!getFileHeader(&fileHeader) || !getTiffHeader(&tiffHeader))
        return std::nullopt;
    TagDictionary tags;
    readDirectory(tags, IFD0Name, tiffHeader.ifd0Offset);
    // Deliberately read as little-endian, although the data is big-endian.
    std::uint32_t nextOffset = 0;
    readRecord(nextOffset);
    convertFromBigEndian(nextOffset);
    readDirectory(tags, IFD1Name, invertByteOrder32(&nextOffset));
    readPointedDirectory(tags, IFD0Name, exifPointerTag, exifSubIFDName);
    readPointedDirectory(tags, exifSubIFDName, interoperabilityPointerTag, interoperabilityIFDName);
    readPointedDirectory(tags, IFD1Name, interoperabilityPointerTag, interoperabilityIFD2Name);
    return tags;
}

/// Adds the directory at `offset` unless its number of entries is out of range. The data is always "MM" here.
void ExifTagReader::readDirectory(TagDictionary& tags, std::string_view name, std::uint32_t offset) {
    std::uint16_t count = 0;
    seek(positionOf(offset));
    readRecord(count);
    convertFromBigEndian(count);
    if (count == 0 || count > maxDirectoryEntries)
        return;
    const auto directory = std::make_shared<IFDDictionary>();
    tags.insert_or_assign(std::string(name), directory);
    for (std::uint16_t i = 0; i < count; ++i) {
        IfdEntry entry{};
        readRecord(entry);
        convertFromBigEndian(entry.tag);
        convertFromBigEndian(entry.type);
        convertFromBigEndian(entry.count);
        if (name != exifSubIFDName || entry.tag != makerNoteTag)
            registTagData(&entry, *directory, true);
    }
}

/// Reads the directory at the offset in `pointerTag` of `parent`; does nothing when there is no such number.
void ExifTagReader::readPointedDirectory(TagDictionary& tags, std::string_view parent,
                                         std::uint16_t pointerTag, std::string_view name) {
    const TagValue* pointer = getTagData(&tags, parent, pointerTag);
    const auto* numbers = std::get_if<NumberList>(pointer);
    if (numbers && !numbers->empty())
        readDirectory(tags, name, numbers->front().unsignedIntValue());
}

IFDDictionaryPointer ExifTagReader::getSubDict(const TagDictionary* tags, std::string_view subDictKey) {
    if (!tags)
        return nullptr;
    const auto directory = tags->find(subDictKey);
    return directory == tags->end() ? nullptr : directory->second;
}

const TagValue* ExifTagReader::getTagData(const TagDictionary* tags, std::string_view subDictKey,
                                          std::uint16_t tag) {
    const IFDDictionaryPointer directory = getSubDict(tags, subDictKey);
    if (!directory)
        return nullptr;
    const auto value = directory->find(keyForTag(tag));
    return value == directory->end() ? nullptr : &value->second;
}

} // namespace kestrine
