// The descriptors inside a record, which is one run of bytes: for each field its key, its type and its size
// in four bytes each, highest first, and then as many bytes.
#pragma once

#include "platform/carbon/AEDataModel.h"

namespace kestrine {

/// The first field of that key. -1701 when there is none, -1703 when `record` is of no record type and -1702
/// when its bytes are not a run of fields; `found` is then left alone.
OSErr getField(const AERecord& record, AEKeyword key, AEDesc& found);

/// Adds a field, in place of one with the same key. -1703 and -1702 as above; -108 when the record would be
/// larger than a size can say.
OSErr putField(AERecord& record, AEKeyword key, const AEDesc& value);

} // namespace kestrine
