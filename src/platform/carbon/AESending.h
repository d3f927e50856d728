// Sending Apple Events. The only receiver is the Finder, which is part of this process.
#pragma once

#include "platform/carbon/AEEvents.h"

#include <functional>

namespace kestrine {

using AESendMode = std::int32_t;
using AESendPriority = std::int16_t;

inline constexpr AESendMode kAENoReply = 1;
inline constexpr AESendMode kAEWaitReply = 3;
inline constexpr AESendPriority kAENormalPriority = 0;
inline constexpr std::int32_t kNoTimeOut = -2;

/// The class and ID of a reply.
inline constexpr AEEventClass kCoreEventClass = fourCharacterCode("aevt");
inline constexpr AEEventID kAEAnswer = fourCharacterCode("ansr");

/// Called while waiting for a reply; true stops waiting.
using AEIdleUPP = std::function<bool()>;

/// Sends the event. It is handled on this thread, so there is no time-out. With kAEWaitReply the reply
/// contains the handler's result, or its error as 'errn' and 'errs'. The status only reports the delivery:
/// -600 when the address is not the Finder's signature, -1707 when `event` is not an event, -50 for a null
/// pointer and for other modes, -1711 when the idle procedure, which is called once after the handler,
/// stopped waiting. With kAENoReply `reply` may be null. When there is no reply it becomes a null descriptor.
OSErr AESend(const AppleEvent* event, AppleEvent* reply, AESendMode mode, AESendPriority priority,
             std::int32_t timeOutInTicks, const AEIdleUPP& idle);

/// AESend() without priority and idle procedure.
OSStatus AESendMessage(const AppleEvent* event, AppleEvent* reply, AESendMode mode,
                       std::int32_t timeOutInTicks);

} // namespace kestrine
