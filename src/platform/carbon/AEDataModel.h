// Apple Event descriptors: a type and the bytes of a value.
#pragma once

#include "platform/carbon/MacTypes.h"
#include "platform/host/Bytes.h"

#include <memory>

namespace kestrine {

using DescType = FourCharCode;
using AEKeyword = FourCharCode;

inline constexpr DescType typeNull = fourCharacterCode("null");
inline constexpr DescType typeWildCard = fourCharacterCode("****");    ///< asks for whatever type there is
inline constexpr DescType typeUnicodeText = fourCharacterCode("utxt"); ///< UTF-16 in this machine's order
inline constexpr DescType typeText = fourCharacterCode("TEXT");        ///< UTF-8
inline constexpr DescType typePString = fourCharacterCode("pstr");     ///< a length byte and as many more
inline constexpr DescType typeBoolean = fourCharacterCode("bool");     ///< one byte, 0 or not
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

/// Copied by value; copies share the bytes, which never change and go with the last of them. One of type
/// 'null' has no bytes; of another type it may have none.
struct AEDesc {
    DescType descriptorType = typeNull;
    std::shared_ptr<const Bytes> dataHandle; ///< null when there are no bytes
};

/// A descriptor that holds others under keys.
using AERecord = AEDesc;

// A missing argument gives -50, and a result is a null descriptor after a failure.

/// Copies `size` bytes. -50 too when `data` is missing, and for bytes of type 'null'.
OSErr AECreateDesc(DescType type, const void* data, Size size, AEDesc* result);

/// Makes the descriptor a null one. -1704, and nothing happens, for bytes of type 'null', which no function
/// here makes.
OSErr AEDisposeDesc(AEDesc* desc);

/// The same value in another type; -1700 when it has no form of that type. Known are 'utxt' and 'TEXT',
/// 'true', 'fals' and 'bool', 'type' and 'enum', and every type in itself. A null descriptor stays one,
/// whatever it is coerced to. Text never becomes a 'pstr': that form could not hold all of it.
OSErr AECoerceDesc(const AEDesc* desc, DescType type, AEDesc* result);

/// In bytes; 0 when `desc` is missing.
Size AEGetDescDataSize(const AEDesc* desc);

/// Copies the bytes, or the first `maximum` of them.
OSErr AEGetDescData(const AEDesc* desc, void* data, Size maximum);

} // namespace kestrine
