// Apple Events: records with attributes (what is asked, and of whom) and parameters.
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
inline constexpr AEKeyword keyErrorNumber = fourCharacterCode("errn"); ///< of a reply: a 'shor'
inline constexpr AEKeyword keyErrorString = fourCharacterCode("errs"); ///< of a reply: a text for people

inline constexpr AEKeyword keyEventClassAttr = fourCharacterCode("evcl");
inline constexpr AEKeyword keyEventIDAttr = fourCharacterCode("evid");
inline constexpr AEKeyword keyAddressAttr = fourCharacterCode("addr");
inline constexpr AEKeyword keyReturnIDAttr = fourCharacterCode("rtid");
inline constexpr AEKeyword keyTransactionIDAttr = fourCharacterCode("tran");

// A missing argument gives -50, unless it is said that it may be null; what is no event gives -1707; broken
// bytes give -1702. A result is a null descriptor after a failure.

/// An event without parameters. An automatic return ID is one that no other event of this process had lately.
OSErr AECreateAppleEvent(AEEventClass eventClass, AEEventID eventID, const AEAddressDesc* target,
                         AEReturnID returnID, AETransactionID transactionID, AppleEvent* result);

OSErr AEPutParamDesc(AppleEvent* event, AEKeyword key, const AEDesc* value);

/// The parameter coerced to `type`; -1701 when there is none, -1700 when it has no form of that type.
OSErr AEGetParamDesc(const AppleEvent* event, AEKeyword key, DescType type, AEDesc* result);

/// The bytes of the parameter coerced to `type`, or the first `maximum` of them. `actualType` and
/// `actualSize`, which is the whole size however much was copied, may be null and are not touched on failure.
OSErr AEGetParamPtr(const AppleEvent* event, AEKeyword key, DescType type, DescType* actualType, void* data,
                    Size maximum, Size* actualSize);

/// The same for an attribute.
OSErr AEGetAttributeDesc(const AppleEvent* event, AEKeyword key, DescType type, AEDesc* result);

} // namespace kestrine
