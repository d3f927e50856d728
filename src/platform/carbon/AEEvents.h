// Apple Events: records with attributes (class, ID, address, ...) and parameters.
#pragma once

#include "platform/carbon/AEDataModel.h"

namespace kestrine {

using AEEventClass = FourCharCode;
using AEEventID = FourCharCode;
using AEReturnID = std::int16_t;
using AETransactionID = std::int32_t;
using AppleEvent = AERecord;
using AEAddressDesc = AEDesc;

inline constexpr AEReturnID kAutoGenerateReturnID = -1;
inline constexpr AETransactionID kAnyTransactionID = 0;

inline constexpr AEKeyword keyDirectObject = fourCharacterCode("----");
inline constexpr AEKeyword keyErrorNumber = fourCharacterCode("errn"); ///< in a reply: a 'shor'
inline constexpr AEKeyword keyErrorString = fourCharacterCode("errs"); ///< in a reply: the message

inline constexpr AEKeyword keyEventClassAttr = fourCharacterCode("evcl");
inline constexpr AEKeyword keyEventIDAttr = fourCharacterCode("evid");
inline constexpr AEKeyword keyAddressAttr = fourCharacterCode("addr");
inline constexpr AEKeyword keyReturnIDAttr = fourCharacterCode("rtid");
inline constexpr AEKeyword keyTransactionIDAttr = fourCharacterCode("tran");

// A null pointer as argument gives -50, unless null is allowed; a descriptor that is not an event gives
// -1707; invalid bytes give -1702. After a failure the result is a null descriptor.

/// Makes an event without parameters. Automatic return IDs repeat after 32768 events of this process.
OSErr AECreateAppleEvent(AEEventClass eventClass, AEEventID eventID, const AEAddressDesc* target,
                         AEReturnID returnID, AETransactionID transactionID, AppleEvent* result);

OSErr AEPutParamDesc(AppleEvent* event, AEKeyword key, const AEDesc* value);

/// The parameter, coerced to `type`; -1701 when it is missing, -1700 when it cannot be coerced.
OSErr AEGetParamDesc(const AppleEvent* event, AEKeyword key, DescType type, AEDesc* result);

/// Copies at most `maximum` bytes of the parameter, coerced to `type`. `actualSize` is the complete size,
/// even when less was copied. `actualType` and `actualSize` may be null; a failure leaves them unchanged.
OSErr AEGetParamPtr(const AppleEvent* event, AEKeyword key, DescType type, DescType* actualType, void* data,
                    Size maximum, Size* actualSize);

/// The attribute, coerced to `type`; errors as for AEGetParamDesc().
OSErr AEGetAttributeDesc(const AppleEvent* event, AEKeyword key, DescType type, AEDesc* result);

} // namespace kestrine
