// The formats in which programs store a comment or the Finder information. Nothing here reads the disk.
// Invalid bytes count as no value and are never changed.
#pragma once

#include "platform/finder/FinderInfo.h"
#include "platform/foundation/text/NSString.h"
#include "platform/host/Bytes.h"

#include <optional>

namespace kestrine {

template <class Value>
struct StoredForm {
    /// The value; nullopt when the bytes are invalid or contain none.
    std::optional<Value> (*read)(ByteView stored);

    /// The bytes with `value` in place of the old value; empty when nothing needs to be stored. nullopt when
    /// the bytes are invalid or have no place for a value.
    std::optional<Bytes> (*changed)(ByteView stored, const Value& value);
};

/// Plain UTF-8.
extern const StoredForm<NSString> commentAsText;
/// A binary property list that contains one string.
extern const StoredForm<NSString> commentInPropertyList;
/// An entry of at most 200 bytes of UTF-8, or Mac OS Roman as old servers write it. A longer comment is cut
/// after a whole character.
extern const StoredForm<NSString> commentInAppleDouble;

/// The plain 32 bytes; information that is all 0 is not stored.
extern const StoredForm<FinderInfo> plainFinderInfo;
extern const StoredForm<FinderInfo> finderInfoInAppleDouble;
/// The stream of 60 bytes that a file server stores for Macs; some servers append a zero byte.
extern const StoredForm<FinderInfo> finderInfoInAFPInfo;

} // namespace kestrine
