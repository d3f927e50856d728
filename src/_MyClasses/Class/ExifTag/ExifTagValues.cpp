// registTagData: converts a directory entry to a value, by a table of field types.
#include "_MyClasses/Class/ExifTag/ByteOrder.h"
#include "_MyClasses/Class/ExifTag/ExifTagReader.h"
#include "_MyClasses/Class/ExifTag/ExifText.h"
#include "platform/foundation/NSFileHandle.h"
#include "platform/host/BigEndian.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace kestrine {

namespace {

constexpr std::uint32_t maxCount = 300;
constexpr std::size_t inlineSize = sizeof(IfdEntry::valueOrOffset);

enum FieldType : std::uint16_t {
    byteType = 1,
    asciiType = 2,
    signedByteType = 6,
    undefinedType = 7,
    signedShortType = 8
};

template <class T>
NSNumber numberAt(const std::uint8_t* bytes, bool isBigEndian) {
    std::array<std::uint8_t, sizeof(T)> ordered;
    std::copy_n(bytes, sizeof(T), ordered.begin());
    if (isBigEndian != (std::endian::native == std::endian::big))
        std::reverse(ordered.begin(), ordered.end());
    T number;
    std::memcpy(&number, ordered.data(), sizeof(T));
    return NSNumber(number);
}

struct NumericType {
    std::uint16_t type;
    std::uint8_t numbersPerValue;
    std::uint8_t numberSize;
    NSNumber (*number)(const std::uint8_t* bytes, bool isBigEndian);

    std::size_t valueSize() const { return std::size_t{numbersPerValue} * numberSize; }
};

constexpr std::array<NumericType, 8> numericTypes{{
    {3, 1, 2, numberAt<std::uint16_t>}, // SHORT
    {4, 1, 4, numberAt<std::uint32_t>}, // LONG
    {5, 2, 4, numberAt<std::uint32_t>}, // RATIONAL
    {signedShortType, 1, 2, numberAt<std::int16_t>},
    {9, 1, 4, numberAt<std::int32_t>},  // SLONG
    {10, 2, 4, numberAt<std::int32_t>}, // SRATIONAL
    {11, 1, 4, numberAt<float>},        // FLOAT
    {12, 1, 8, numberAt<double>},       // DOUBLE
}};

const NumericType* numericType(std::uint16_t type) {
    const auto row = std::find_if(numericTypes.begin(), numericTypes.end(),
                                  [type](const NumericType& candidate) { return candidate.type == type; });
    return row == numericTypes.end() ? nullptr : &*row;
}

NumberList numbersIn(ByteView bytes, const NumericType& type, bool isBigEndian) {
    NumberList numbers;
    for (std::size_t at = 0; at < bytes.size(); at += type.numberSize)
        numbers.push_back(type.number(bytes.data() + at, isBigEndian));
    return numbers;
}

/// The values in the entry itself. Deliberately, there is one even when the count is 0, and the first signed
/// short is read as unsigned.
NumberList inlineNumbers(const IfdEntry& entry, const NumericType& type, bool isBigEndian) {
    NumberList numbers;
    const bool firstIsUnsigned = entry.type == signedShortType;
    numbers.push_back(
        (firstIsUnsigned ? numberAt<std::uint16_t> : type.number)(entry.valueOrOffset.data(), isBigEndian));
    if (entry.count > 1)
        numbers.push_back(type.number(entry.valueOrOffset.data() + type.numberSize, isBigEndian));
    return numbers;
}

} // namespace

/// `size` bytes at the offset in the entry; zeros after the end of the file.
Bytes ExifTagReader::bytesAtOffset(const IfdEntry& entry, std::size_t size, bool isIntel) {
    auto offset = static_cast<std::uint32_t>(bigEndian(entry.valueOrOffset));
    if (!isIntel)
        invertByteOrder32(&offset);
    Bytes bytes(size);
    seek(positionOf(offset));
    read(bytes);
    return bytes;
}

std::optional<TagValue> ExifTagReader::valueOf(const IfdEntry& entry, bool isIntel) {
    const auto& field = entry.valueOrOffset;
    switch (entry.type) {
    case asciiType:
        return exifTextFromBytes(entry.count <= inlineSize ? Bytes(field.begin(), field.end())
                                                           : bytesAtOffset(entry, entry.count, isIntel));
    case byteType:
    case signedByteType:
    case undefinedType:
        return entry.count <= inlineSize ? ByteBlock(field.begin(), field.begin() + entry.count)
                                         : bytesAtOffset(entry, entry.count, isIntel);
    }
    const NumericType* type = numericType(entry.type);
    if (!type)
        return std::nullopt;
    const std::size_t size = entry.count * type->valueSize();
    if (type->valueSize() <= inlineSize && size <= inlineSize)
        return inlineNumbers(entry, *type, isIntel);
    return numbersIn(bytesAtOffset(entry, size, isIntel), *type, isIntel);
}

void ExifTagReader::registTagData(const IfdEntry* entry, IFDDictionary& directory, bool isIntel) {
    if (!entry || entry->count > maxCount)
        return;
    const std::uint64_t position = fileHandle_ ? fileHandle_->offsetInFile() : 0;
    if (std::optional<TagValue> value = valueOf(*entry, isIntel))
        directory.insert_or_assign(keyForTag(entry->tag), std::move(*value));
    seek(position);
}

} // namespace kestrine
