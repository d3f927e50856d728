// The Apple Events with which the file utilities ask the Finder for something.
#pragma once

#include "platform/carbon/AESending.h"

#include <initializer_list>

namespace kestrine {

/// An event of class 'core' to the Finder, with the parameters that `text` describes; -10206 when it
/// describes none. `event` is null after a failure.
OSStatus buildFinderRequest(AEEventID eventID, const char* text,
                            std::initializer_list<const AEDesc*> descriptors, AppleEvent* event);

/// Sends it and waits as long as it takes. The status tells only whether it got there.
OSStatus sendFinderRequest(const AppleEvent& event, AppleEvent& reply);

} // namespace kestrine
