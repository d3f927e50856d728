// Makes and reads descriptors; for internal use instead of the published functions.
#pragma once

#include "platform/carbon/AEDataModel.h"
#include "platform/foundation/text/NSString.h"

namespace kestrine {

AEDesc descriptorOf(DescType type, Bytes data);
ByteView dataOf(const AEDesc& desc);

AEDesc unicodeTextDescriptor(const NSString& text);
/// The text of a descriptor of type 'utxt'; an odd byte at the end is ignored.
NSString unicodeTextOf(const AEDesc& desc);

AEDesc codeDescriptor(DescType type, FourCharCode code);
/// 0 unless there are exactly four bytes.
FourCharCode codeOf(const AEDesc& desc);

} // namespace kestrine
