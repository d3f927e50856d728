// Apple Event descriptors: a type and a value as bytes.
#pragma once

#include "platform/carbon/MacTypes.h"
#include "platform/host/Bytes.h"

#include <memory>

namespace kestrine {

using DescType = FourCharCode;
using AEKeyword = FourCharCode;

inline constexpr DescType typeNull = fourCharacterCode("null");
inline constexpr DescType typeWildCard = fourCharacterCode("****");    ///< matches every type
inline constexpr DescType typeUnicodeText = fourCharacterCode("utxt"); ///< UTF-16 in the machine's byte order
inline constexpr DescType typeText = fourCharacterCode("TEXT");        ///< UTF-8
inline constexpr DescType typePString = fourCharacterCode("pstr");     ///< a length byte, then as many bytes
inline constexpr DescType typeBoolean = fourCharacterCode("bool");     ///< one byte; 0 is false
inline constexpr DescType typeTrue = fourCharacterCode("true");        ///< no bytes
inline constexpr DescType typeFalse = fourCharacterCode("fals");       ///< no bytes
inline constexpr DescType typeShortInteger = fourCharacterCode("shor");
inline constexpr DescType typeLongInteger = fourCharacterCode("long");
inline constexpr DescType typeType = fourCharacterCode("type");       ///< a four-character code
inline constexpr DescType typeEnumerated = fourCharacterCode("enum"); ///< a four-character code
inline constexpr DescType typeAlias = fourCharacterCode("alis");
inline constexpr DescType typeApplSignature = fourCharacterCode("sign");
inline constexpr DescType typeAERecord = fourCharacterCode("reco");
inline constexpr DescType typeObjectSpecifier = fourCharacterCode("obj ");
inline constexpr DescType typeAppleEvent = fourCharacterCode("aevt");

/// Copies share the bytes, which never change. A descriptor of type 'null' (a null descriptor) has no bytes;
/// other types may have none as well.
struct AEDesc {
    DescType descriptorType = typeNull;
    std::shared_ptr<const Bytes> dataHandle; ///< null when there are no bytes
};

/// A descriptor that contains other descriptors, each with a key.
using AERecord = AEDesc;

// A null pointer as argument gives -50. After a failure the result is a null descriptor.

/// Copies `size` bytes. -50 for bytes of type 'null' as well.
OSErr AECreateDesc(DescType type, const void* data, Size size, AEDesc* result);

/// Makes the descriptor a null descriptor. -1704, without a change, for one of type 'null' that has bytes; no
/// function here makes such a descriptor.
OSErr AEDisposeDesc(AEDesc* desc);

/// Converts the value to another type; -1700 when there is no conversion. Supported are 'utxt' to 'TEXT' and
/// back, 'true' and 'fals' to 'bool', 'type' to 'enum' and back, and every type to itself. A null descriptor
/// stays a null descriptor. Text is never converted to 'pstr', which is limited to 255 bytes.
OSErr AECoerceDesc(const AEDesc* desc, DescType type, AEDesc* result);

/// The length of the data in bytes; 0 for a null pointer.
Size AEGetDescDataSize(const AEDesc* desc);

/// Copies at most `maximum` bytes.
OSErr AEGetDescData(const AEDesc* desc, void* data, Size maximum);

} // namespace kestrine
