// TypedStreamCursor: reads the basic elements of an archive one after another.
// After the first failure every read gives zero, an empty value or null. Later failures are ignored.
#pragma once

#include "platform/foundation/archiving/TypeEncoding.h"
#include "platform/foundation/archiving/TypedStreamFormat.h"
#include "platform/host/Bytes.h"

#include <deque>
#include <optional>

namespace kestrine {

/// An entry in the table of shared strings.
struct SharedString {
    std::string_view text;
    /// The text parsed as a type string; empty until it is used as one.
    TypeEncoding encoding;
};

class TypedStreamCursor {
public:
    /// The bytes must outlive the cursor and everything that it returns.
    explicit TypedStreamCursor(ByteView bytes) : rest_(bytes) {}

    bool failed() const { return failure_.has_value(); }
    const Failure& failure() const { return *failure_; }
    void fail(Reason reason, const char* text);

    /// Reads the streamer version, the signature, which sets the byte order, and the system version.
    void readHeader();

    /// Skips the next byte if it is `head`, and returns whether it was. False at the end of the bytes.
    bool take(typedstream::Head head);

    std::uint8_t readByte();
    ByteView readBytes(std::uint64_t count);
    /// An integer in any form.
    std::int64_t readInteger();
    /// A floating-point number: an integer in any form, or a raw number of `width` (4 or 8) bytes.
    double readFloat(std::size_t width);
    /// A length and as many bytes; empty for nil.
    std::optional<ByteView> readCountedBytes();
    /// A new shared string or a reference to an earlier one; null for nil. The pointer stays valid during
    /// later reads.
    SharedString* readSharedString();
    /// A reference to an entry of a table with `entries` entries, as its index.
    std::optional<std::size_t> readReference(std::size_t entries);

private:
    std::uint64_t readRaw(std::size_t width);

    ByteView rest_;
    bool bigEndian_ = false;
    std::deque<SharedString> strings_;
    std::optional<Failure> failure_;
};

} // namespace kestrine
