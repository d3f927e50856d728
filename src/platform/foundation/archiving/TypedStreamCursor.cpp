#include "platform/foundation/archiving/TypedStreamCursor.h"

#include <bit>

namespace kestrine {

using namespace typedstream;

namespace {

std::string_view textOf(ByteView bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

} // namespace

void TypedStreamCursor::fail(Reason reason, const char* text) {
    if (!failure_) {
        failure_ = Failure{reason, text};
        rest_ = {};
    }
}

void TypedStreamCursor::readHeader() {
    const std::uint8_t version = readByte();
    const auto length = static_cast<std::size_t>(readInteger());
    const std::string_view signature =
        textOf(length == littleEndianSignature.size() ? readBytes(length) : ByteView{});
    bigEndian_ = signature == bigEndianSignature;
    if (!bigEndian_ && signature != littleEndianSignature) {
        return fail(Reason::malformed, "the data is not a typedstream");
    }
    if (version != streamerVersion) {
        return fail(Reason::unsupported, "the typedstream has an unknown streamer version");
    }
    readInteger();
}

bool TypedStreamCursor::take(Head head) {
    if (rest_.empty() || rest_.front() != head) {
        return false;
    }
    rest_ = rest_.subspan(1);
    return true;
}

ByteView TypedStreamCursor::readBytes(std::uint64_t count) {
    if (count > rest_.size()) {
        fail(Reason::truncated, "the typedstream is incomplete");
        return {};
    }
    const ByteView bytes = rest_.first(static_cast<std::size_t>(count));
    rest_ = rest_.subspan(bytes.size());
    return bytes;
}

std::uint8_t TypedStreamCursor::readByte() {
    const ByteView bytes = readBytes(1);
    return bytes.empty() ? std::uint8_t{0} : bytes.front();
}

std::uint64_t TypedStreamCursor::readRaw(std::size_t width) {
    const ByteView bytes = readBytes(width);
    std::uint64_t bits = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bits = bits << 8 | bytes[bigEndian_ ? i : bytes.size() - 1 - i];
    }
    return bits;
}

std::int64_t TypedStreamCursor::readInteger() {
    const std::uint8_t head = readByte();
    switch (head) {
    case shortInteger:
        return static_cast<std::int16_t>(readRaw(2));
    case longInteger:
        return static_cast<std::int32_t>(readRaw(4));
    case wideInteger:
        return static_cast<std::int64_t>(readRaw(8));
    default:
        break;
    }
    if (head > 0x7f && head <= lastReservedHead) {
        fail(Reason::malformed, "a number is expected and a tag is found");
        return 0;
    }
    return static_cast<std::int8_t>(head);
}

double TypedStreamCursor::readFloat(std::size_t width) {
    if (!take(rawFloat)) {
        return static_cast<double>(readInteger());
    }
    const std::uint64_t bits = readRaw(width);
    return width == 4 ? std::bit_cast<float>(static_cast<std::uint32_t>(bits)) : std::bit_cast<double>(bits);
}

std::optional<ByteView> TypedStreamCursor::readCountedBytes() {
    if (take(nil)) {
        return std::nullopt;
    }
    const std::int64_t length = readInteger();
    if (length < 0) {
        fail(Reason::malformed, "a length is negative");
        return std::nullopt;
    }
    return readBytes(static_cast<std::uint64_t>(length));
}

SharedString* TypedStreamCursor::readSharedString() {
    if (take(nil)) {
        return nullptr;
    }
    if (!take(fresh)) {
        const auto index = readReference(strings_.size());
        return index ? &strings_[*index] : nullptr;
    }
    const std::optional<ByteView> bytes = readCountedBytes();
    if (!bytes) {
        fail(Reason::malformed, "a new string is nil");
        return nullptr;
    }
    return &strings_.emplace_back(SharedString{textOf(*bytes), {}});
}

std::optional<std::size_t> TypedStreamCursor::readReference(std::size_t entries) {
    const std::int64_t reference = readInteger();
    if (failed()) {
        return std::nullopt;
    }
    if (reference < firstReference || reference >= firstReference + static_cast<std::int64_t>(entries)) {
        fail(Reason::malformed, "a reference has no target");
        return std::nullopt;
    }
    return static_cast<std::size_t>(reference - firstReference);
}

} // namespace kestrine
