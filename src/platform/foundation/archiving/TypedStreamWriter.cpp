#include "platform/foundation/archiving/TypedStreamWriter.h"

#include "platform/foundation/archiving/TypedStreamFormat.h"
#include "platform/host/StringBytes.h"

#include <bit>
#include <limits>

namespace kestrine {

using namespace typedstream;

namespace {

/// Floating-point numbers without a fraction are stored as integers if they are in the range from this
/// number, included, to its negative, excluded.
constexpr double leastWholeFloat = -2147483646.0;

bool isStoredAsInteger(double value) {
    return value >= leastWholeFloat && value < -leastWholeFloat
           && static_cast<double>(static_cast<std::int64_t>(value)) == value;
}

} // namespace

TypedStreamWriter::TypedStreamWriter() {
    bytes_.push_back(streamerVersion);
    writeText(littleEndianSignature);
    writeInteger(systemVersion);
}

void TypedStreamWriter::writeRaw(std::uint64_t bits, std::size_t width) {
    for (std::size_t i = 0; i < width; ++i) {
        bytes_.push_back(static_cast<std::uint8_t>(bits >> (8 * i)));
    }
}

void TypedStreamWriter::writeInteger(std::int64_t value) {
    using Limits = std::numeric_limits<std::int32_t>;
    const auto bits = static_cast<std::uint64_t>(value);
    if (value >= firstReference && value <= 127) {
        return writeRaw(bits, 1);
    }
    if (value >= -32767 && value <= 32767) {
        bytes_.push_back(shortInteger);
        return writeRaw(bits, 2);
    }
    if (value >= Limits::min() && value <= Limits::max()) {
        bytes_.push_back(longInteger);
        return writeRaw(bits, 4);
    }
    bytes_.push_back(wideInteger);
    writeRaw(bits, 8);
}

void TypedStreamWriter::writeFloat(float value) {
    if (isStoredAsInteger(value)) {
        return writeInteger(static_cast<std::int64_t>(value));
    }
    bytes_.push_back(rawFloat);
    writeRaw(std::bit_cast<std::uint32_t>(value), 4);
}

void TypedStreamWriter::writeFloat(double value) {
    if (isStoredAsInteger(value)) {
        return writeInteger(static_cast<std::int64_t>(value));
    }
    bytes_.push_back(rawFloat);
    writeRaw(std::bit_cast<std::uint64_t>(value), 8);
}

void TypedStreamWriter::writeCountedBytes(ByteView bytes) {
    writeInteger(static_cast<std::int64_t>(bytes.size()));
    writeBytes(bytes);
}

void TypedStreamWriter::writeText(std::string_view text) { writeCountedBytes(bytesOf(text)); }

void TypedStreamWriter::writeSharedString(std::string_view text) {
    if (const auto known = strings_.find(text); known != strings_.end()) {
        return writeReference(known->second);
    }
    strings_.emplace(text, strings_.size());
    bytes_.push_back(fresh);
    writeText(text);
}

void TypedStreamWriter::writeCString(std::string_view text) {
    if (const auto known = cStrings_.find(text); known != cStrings_.end()) {
        return writeReference(known->second);
    }
    cStrings_.emplace(text, nextShared_++);
    bytes_.push_back(fresh);
    writeSharedString(text);
}

void TypedStreamWriter::writeNil() { bytes_.push_back(nil); }

void TypedStreamWriter::writeReference(std::size_t number) {
    writeInteger(firstReference + static_cast<std::int64_t>(number));
}

void TypedStreamWriter::writeClass(std::span<const ClassVersion> chain) {
    for (const ClassVersion& each : chain) {
        if (const auto known = classes_.find(each.name); known != classes_.end()) {
            return writeReference(known->second);
        }
        classes_.emplace(each.name, nextShared_++);
        bytes_.push_back(fresh);
        writeSharedString(each.name);
        writeInteger(each.version);
    }
    bytes_.push_back(nil);
}

std::size_t TypedStreamWriter::beginObject(std::span<const ClassVersion> chain) {
    const std::size_t number = nextShared_++;
    bytes_.push_back(fresh);
    writeClass(chain);
    return number;
}

void TypedStreamWriter::endObject() { bytes_.push_back(endOfObject); }

} // namespace kestrine
