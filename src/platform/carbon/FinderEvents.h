// The Finder's door for Apple Events: which ones it handles, and what comes of each. The rules of what is
// done to files are the Finder's own and the same as for scripts.
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

/// The Finder's property that holds an item's comment.
inline constexpr FourCharCode pComment = fourCharacterCode("comt");

struct FinderAnswer {
    FinderOutcome error;
    AEDesc directObject; ///< a null descriptor when there is nothing to tell
};

/// Handles 'core' 'getd' and 'setd' of an item's comment, 'core' 'clon' of an item into a folder, and 'fndr'
/// 'fupd', for which there is nothing to do. Error numbers: -1708 for other events, -1701 for a missing
/// parameter, -1700 for one of the wrong type, -1728 for what is no object that the Finder knows, and those
/// of the Finder.
FinderAnswer answerFinderEvent(const AppleEvent& event);

} // namespace kestrine
