#include "platform/carbon/RecordFields.h"

#include "platform/carbon/DescriptorData.h"
#include "platform/host/BigEndian.h"

#include <algorithm>
#include <array>
#include <optional>

namespace kestrine {
namespace {

constexpr std::array recordTypes{typeAERecord, typeObjectSpecifier, typeAppleEvent};
constexpr std::size_t headerSize = 12;
constexpr std::uint64_t maxRecordSize = UINT32_MAX;

struct Field {
    AEKeyword key;
    DescType type;
    ByteView data;
};

/// Removes the first field from `rest`; nullopt when the bytes end too early.
std::optional<Field> takeField(ByteView& rest) {
    if (rest.size() < headerSize)
        return std::nullopt;
    const std::uint64_t size = bigEndian(rest.subspan(8, 4));
    if (size > rest.size() - headerSize)
        return std::nullopt;
    const Field field{static_cast<AEKeyword>(bigEndian(rest.first(4))),
                      static_cast<DescType>(bigEndian(rest.subspan(4, 4))), rest.subspan(headerSize, size)};
    rest = rest.subspan(headerSize + size);
    return field;
}

void appendField(Bytes& bytes, const Field& field) {
    appendBigEndian(bytes, field.key, 4);
    appendBigEndian(bytes, field.type, 4);
    appendBigEndian(bytes, field.data.size(), 4);
    bytes.insert(bytes.end(), field.data.begin(), field.data.end());
}

bool isRecordType(DescType type) { return std::ranges::find(recordTypes, type) != recordTypes.end(); }

} // namespace

OSErr getField(const AERecord& record, AEKeyword key, AEDesc& found) {
    if (!isRecordType(record.descriptorType))
        return errAEWrongDataType;
    ByteView rest = dataOf(record);
    while (!rest.empty()) {
        const std::optional<Field> field = takeField(rest);
        if (!field)
            return errAECorruptData;
        if (field->key != key)
            continue;
        if (field->type == typeNull && !field->data.empty())
            return errAECorruptData;
        found = descriptorOf(field->type, Bytes(field->data.begin(), field->data.end()));
        return noErr;
    }
    return errAEDescNotFound;
}

OSErr putField(AERecord& record, AEKeyword key, const AEDesc& value) {
    if (!isRecordType(record.descriptorType))
        return errAEWrongDataType;
    ByteView rest = dataOf(record);
    if (rest.size() + headerSize + dataOf(value).size() > maxRecordSize)
        return memFullErr;
    Bytes bytes;
    while (!rest.empty()) {
        const std::optional<Field> field = takeField(rest);
        if (!field)
            return errAECorruptData;
        if (field->key != key)
            appendField(bytes, *field);
    }
    appendField(bytes, {key, value.descriptorType, dataOf(value)});
    record = descriptorOf(record.descriptorType, std::move(bytes));
    return noErr;
}

} // namespace kestrine
