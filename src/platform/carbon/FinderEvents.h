// Handles Apple Events for the Finder. The file operations are the same as for scripts (Finder.h).
#pragma once

#include "platform/carbon/AEEvents.h"
#include "platform/finder/Finder.h"

namespace kestrine {

inline constexpr FourCharCode finderSignature = fourCharacterCode("MACS");

inline constexpr AEEventClass kAECoreSuite = fourCharacterCode("core");
inline constexpr AEEventID kAEGetData = fourCharacterCode("getd");
inline constexpr AEEventID kAESetData = fourCharacterCode("setd");
inline constexpr AEEventID kAEClone = fourCharacterCode("clon");
inline constexpr AEEventClass kAEFinderEvents = fourCharacterCode("fndr");
inline constexpr AEEventID kAESync = fourCharacterCode("fupd");

inline constexpr AEKeyword keyAEData = fourCharacterCode("data");
inline constexpr AEKeyword keyAEInsertHere = fourCharacterCode("insh");
inline constexpr AEKeyword keyASReplacing = fourCharacterCode("alrp");

/// The property with an item's comment.
inline constexpr FourCharCode pComment = fourCharacterCode("comt");

struct FinderAnswer {
    FinderOutcome error;
    AEDesc directObject; ///< a null descriptor when there is no result
};

/// Handles 'core' 'getd' and 'setd' for an item's comment, 'core' 'clon' of an item into a folder, and 'fndr'
/// 'fupd', which does nothing. Errors: -1708 for other events, -1701 for a missing parameter, -1700 for a
/// parameter of the wrong type, -1728 for an unknown object, and the Finder's errors.
FinderAnswer answerFinderEvent(const AppleEvent& event);

} // namespace kestrine
