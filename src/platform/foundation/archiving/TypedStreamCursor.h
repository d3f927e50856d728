// TypedStreamCursor: a place in the bytes of an archive, and what can be read there without knowing objects.
// Its failure is sticky: the first one stays, and from then on every read gives zero, nothing or null.
#pragma once

#include "platform/foundation/archiving/TypeEncoding.h"
#include "platform/foundation/archiving/TypedStreamFormat.h"
#include "platform/host/Bytes.h"

#include <deque>
#include <optional>

namespace kestrine {

/// An entry of the table of shared strings.
struct SharedString {
    std::string_view text;
    /// What the text means as a type string; empty until it is used as one.
    TypeEncoding encoding;
};

class TypedStreamCursor {
public:
    /// The bytes must outlive the cursor and everything read through it.
    explicit TypedStreamCursor(ByteView bytes) : rest_(bytes) {}

    bool failed() const { return failure_.has_value(); }
    const Failure& failure() const { return *failure_; }
    void fail(Reason reason, const char* text);

    /// The streamer version, the signature, which sets the byte order, and the system version.
    void readHeader();

    /// Steps over the next byte if it is `head`; at the end of the bytes it is not.
    bool take(typedstream::Head head);

    std::uint8_t readByte();
    ByteView readBytes(std::uint64_t count);
    /// An integer in any of its forms.
    std::int64_t readInteger();
    /// A whole number in any form of an integer, or `width` (4 or 8) raw bytes.
    double readFloat(std::size_t width);
    /// A length and as many bytes; nothing for nil.
    std::optional<ByteView> readCountedBytes();
    /// A new or an earlier shared string, null for nil. It stays where it is while more are read.
    SharedString* readSharedString();
    /// A reference into a table that has `entries` entries so far.
    std::optional<std::size_t> readReference(std::size_t entries);

private:
    std::uint64_t readRaw(std::size_t width);

    ByteView rest_;
    bool bigEndian_ = false;
    std::deque<SharedString> strings_;
    std::optional<Failure> failure_;
};

} // namespace kestrine
