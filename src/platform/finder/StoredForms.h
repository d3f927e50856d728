// The forms in which programs store a comment or the Finder information, from bytes and back. Nothing here
// looks at the disk. Bytes that break their form hold nothing and are never changed.
#pragma once

#include "platform/finder/FinderInfo.h"
#include "platform/foundation/text/NSString.h"
#include "platform/host/Bytes.h"

#include <optional>

namespace kestrine {

template <class Value>
struct StoredForm {
    /// The value; nothing when the bytes break the form or keep none.
    std::optional<Value> (*read)(ByteView stored);

    /// The bytes with `value` in place of theirs and all else as it was; no bytes at all when nothing is
    /// left to be stored. Nothing when the bytes break the form or have no place for a value.
    std::optional<Bytes> (*changed)(ByteView stored, const Value& value);
};

/// UTF-8 and nothing else.
extern const StoredForm<NSString> commentAsText;
/// A binary property list with one text.
extern const StoredForm<NSString> commentInPropertyList;
/// An entry of at most 200 bytes. One that is no UTF-8 is read as Mac OS Roman, as old servers have it; a
/// comment that is too long is cut between two characters.
extern const StoredForm<NSString> commentInAppleDouble;

/// The 32 bytes and nothing else; all zero is nothing to be stored.
extern const StoredForm<FinderInfo> plainFinderInfo;
extern const StoredForm<FinderInfo> finderInfoInAppleDouble;
/// The stream of 60 bytes that a file server keeps for Macs, with or without the zero that some append.
extern const StoredForm<FinderInfo> finderInfoInAFPInfo;

} // namespace kestrine
