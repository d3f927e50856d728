// What this folder's own sources do with descriptors as values, without the published functions' arguments.
#pragma once

#include "platform/carbon/AEDataModel.h"
#include "platform/foundation/text/NSString.h"

namespace kestrine {

AEDesc descriptorOf(DescType type, Bytes data);
ByteView dataOf(const AEDesc& desc);

AEDesc unicodeTextDescriptor(const NSString& text);
/// What a descriptor of type 'utxt' says; an odd byte at its end is dropped.
NSString unicodeTextOf(const AEDesc& desc);

/// A descriptor of a four-character code, and the code in one; 0 when there are not four bytes.
AEDesc codeDescriptor(DescType type, FourCharCode code);
FourCharCode codeOf(const AEDesc& desc);

} // namespace kestrine
