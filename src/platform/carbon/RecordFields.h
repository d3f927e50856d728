// The fields of a record. Each is stored as its key, its type and its size, big-endian with four bytes each,
// and then its bytes.
#pragma once

#include "platform/carbon/AEDataModel.h"

namespace kestrine {

/// The first field with that key. -1701 when there is none, -1703 when `record` has no record type, -1702
/// when its bytes are invalid; `found` is then unchanged.
OSErr getField(const AERecord& record, AEKeyword key, AEDesc& found);

/// Adds a field and removes those with the same key. -1703 and -1702 as for getField(); -108 when the record
/// would exceed 4 GiB.
OSErr putField(AERecord& record, AEKeyword key, const AEDesc& value);

} // namespace kestrine
