#include "tests/support/ExifBuilder.h"

#include <algorithm>
#include <bit>
#include <stdexcept>

namespace kestrine::testing {

namespace {

constexpr std::uint32_t headerSize = 8;
constexpr std::uint16_t exifPointer = 0x8769;
constexpr std::uint16_t gpsPointer = 0x8825;
constexpr std::uint16_t interoperabilityPointer = 0xa005;

template <class Unsigned>
void append(Bytes& out, Unsigned number, ExifOrder order = ExifOrder::bigEndian) {
    for (std::size_t i = 0; i < sizeof number; ++i) {
        const std::size_t place = order == ExifOrder::bigEndian ? sizeof number - 1 - i : i;
        out.push_back(static_cast<std::uint8_t>(number >> 8 * place));
    }
}

void appendBytes(Bytes& out, ByteView bytes) { out.insert(out.end(), bytes.begin(), bytes.end()); }

template <class Unsigned, class Number>
ExifField numbersField(std::uint16_t tag, std::uint16_t type, const std::vector<Number>& numbers,
                       std::size_t numbersPerValue = 1) {
    ExifField field{
        tag, type, static_cast<std::uint32_t>(numbers.size() / numbersPerValue), {}, sizeof(Unsigned)};
    for (const Number number : numbers)
        append(field.value, std::bit_cast<Unsigned>(number));
    return field;
}

/// The size of a directory with `pointers` additional fields.
std::size_t sizeOf(const std::vector<ExifField>& fields, int pointers = 0) {
    const std::size_t count = fields.size() + pointers;
    std::size_t size = count == 0 ? 0 : 2 + 12 * count + 4;
    for (const ExifField& field : fields)
        size += field.value.size() > 4 ? (field.value.size() + 1) / 2 * 2 : 0;
    return size;
}

Bytes ordered(const ExifField& field, ExifOrder order) {
    Bytes value = field.value;
    for (std::size_t i = 0; order == ExifOrder::littleEndian && i + field.unitSize <= value.size();
         i += field.unitSize)
        std::reverse(value.begin() + i, value.begin() + i + field.unitSize);
    return value;
}

void appendDirectory(Bytes& out, const std::vector<ExifField>& fields, ExifOrder order, std::size_t next = 0,
                     bool nextIsLittleEndian = false) {
    if (fields.empty())
        return;
    const std::size_t valuesAt = out.size() + 2 + 12 * fields.size() + 4;
    Bytes values;
    append(out, static_cast<std::uint16_t>(fields.size()), order);
    for (const ExifField& field : fields) {
        Bytes value = ordered(field, order);
        append(out, field.tag, order);
        append(out, field.type, order);
        append(out, field.count, order);
        if (value.size() > 4) {
            append(out, static_cast<std::uint32_t>(valuesAt + values.size()), order);
            appendBytes(values, value);
            values.resize((values.size() + 1) / 2 * 2);
        } else {
            value.resize(4);
            appendBytes(out, value);
        }
    }
    append(out, static_cast<std::uint32_t>(next), nextIsLittleEndian ? ExifOrder::littleEndian : order);
    appendBytes(out, values);
}

/// Adds a pointer to the child directory at `offset`, unless the child is empty.
void addPointer(std::vector<ExifField>& parent, std::uint16_t tag, const std::vector<ExifField>& child,
                std::size_t offset) {
    if (!child.empty())
        parent.push_back(exifLongs(tag, {static_cast<std::uint32_t>(offset)}));
}

} // namespace

ExifField exifText(std::uint16_t tag, std::string_view text) {
    Bytes bytes(text.begin(), text.end());
    bytes.push_back(0);
    return exifBytes(tag, std::move(bytes), 2);
}

ExifField exifBytes(std::uint16_t tag, Bytes bytes, std::uint16_t type) {
    const auto count = static_cast<std::uint32_t>(bytes.size());
    return {tag, type, count, std::move(bytes)};
}

ExifField exifShorts(std::uint16_t tag, const std::vector<std::uint16_t>& numbers) {
    return numbersField<std::uint16_t>(tag, 3, numbers);
}
ExifField exifSignedShorts(std::uint16_t tag, const std::vector<std::int16_t>& numbers) {
    return numbersField<std::uint16_t>(tag, 8, numbers);
}
ExifField exifLongs(std::uint16_t tag, const std::vector<std::uint32_t>& numbers) {
    return numbersField<std::uint32_t>(tag, 4, numbers);
}
ExifField exifSignedLongs(std::uint16_t tag, const std::vector<std::int32_t>& numbers) {
    return numbersField<std::uint32_t>(tag, 9, numbers);
}
ExifField exifRationals(std::uint16_t tag, const std::vector<std::uint32_t>& numbers) {
    return numbersField<std::uint32_t>(tag, 5, numbers, 2);
}
ExifField exifSignedRationals(std::uint16_t tag, const std::vector<std::int32_t>& numbers) {
    return numbersField<std::uint32_t>(tag, 10, numbers, 2);
}
ExifField exifFloats(std::uint16_t tag, const std::vector<float>& numbers) {
    return numbersField<std::uint32_t>(tag, 11, numbers);
}
ExifField exifDoubles(std::uint16_t tag, const std::vector<double>& numbers) {
    return numbersField<std::uint64_t>(tag, 12, numbers);
}

Bytes exifBlock(const ExifContent& content) {
    ExifContent made = content;
    const int hasExif = !made.exifSubIFD.empty(), hasGPS = !made.gpsIFD.empty();
    const std::size_t exifAt = headerSize + sizeOf(made.ifd0, hasExif + hasGPS);
    const std::size_t interoperabilityAt =
        exifAt + sizeOf(made.exifSubIFD, !made.interoperabilityIFD.empty());
    const std::size_t gpsAt = interoperabilityAt + sizeOf(made.interoperabilityIFD);
    const std::size_t ifd1At = gpsAt + sizeOf(made.gpsIFD);
    const std::size_t interoperability2At = ifd1At + sizeOf(made.ifd1, !made.interoperabilityIFD2.empty());
    addPointer(made.ifd0, exifPointer, made.exifSubIFD, exifAt);
    addPointer(made.ifd0, gpsPointer, made.gpsIFD, gpsAt);
    addPointer(made.exifSubIFD, interoperabilityPointer, made.interoperabilityIFD, interoperabilityAt);
    addPointer(made.ifd1, interoperabilityPointer, made.interoperabilityIFD2, interoperability2At);

    Bytes out(2, made.order == ExifOrder::bigEndian ? 'M' : 'I');
    append(out, std::uint16_t{42}, made.order);
    append(out, headerSize, made.order);
    appendDirectory(out, made.ifd0, made.order, made.ifd1.empty() ? 0 : ifd1At,
                    made.nextOffsetIsLittleEndian);
    appendDirectory(out, made.exifSubIFD, made.order);
    appendDirectory(out, made.interoperabilityIFD, made.order);
    appendDirectory(out, made.gpsIFD, made.order);
    appendDirectory(out, made.ifd1, made.order);
    appendDirectory(out, made.interoperabilityIFD2, made.order);
    return out;
}

Bytes jpegSegment(std::uint8_t code, ByteView content) {
    if (content.size() > 65533)
        throw std::length_error("a segment holds at most 65533 bytes");
    Bytes segment;
    segment.reserve(content.size() + 4);
    segment = {0xff, code};
    append(segment, static_cast<std::uint16_t>(content.size() + 2));
    appendBytes(segment, content);
    return segment;
}

Bytes exifSegment(ByteView block) {
    Bytes content{'E', 'x', 'i', 'f', 0, 0};
    appendBytes(content, block);
    return jpegSegment(0xe1, content);
}

Bytes jfifSegment() { return jpegSegment(0xe0, Bytes{'J', 'F', 'I', 'F', 0, 1, 1, 0, 0, 1, 0, 1, 0, 0}); }

Bytes jpegFile(const std::vector<Bytes>& segments) {
    Bytes quantisation(65, 1);
    quantisation[0] = 0;
    // Each table has one code of one bit: a DC difference of zero, and end of block.
    Bytes dcCodes(18, 0), acCodes(18, 0);
    dcCodes[1] = acCodes[1] = 1;
    acCodes[0] = 0x10;
    Bytes file{0xff, 0xd8};
    for (const Bytes& segment : segments)
        appendBytes(file, segment);
    appendBytes(file, jpegSegment(0xdb, quantisation));
    appendBytes(file, jpegSegment(0xc0, Bytes{8, 0, 8, 0, 8, 1, 1, 0x11, 0}));
    appendBytes(file, jpegSegment(0xc4, dcCodes));
    appendBytes(file, jpegSegment(0xc4, acCodes));
    appendBytes(file, jpegSegment(0xda, Bytes{1, 1, 0, 0, 63, 0}));
    appendBytes(file, Bytes{0x3f, 0xff, 0xd9});
    return file;
}

Bytes jpegFile(const ExifContent& content) { return jpegFile({exifSegment(exifBlock(content))}); }

} // namespace kestrine::testing
