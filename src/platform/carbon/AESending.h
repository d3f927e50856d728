// Sending Apple Events. The Finder is part of this process, and the only one to send to.
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

/// Called while a reply is awaited; true ends the waiting.
using AEIdleUPP = std::function<bool()>;

/// Has the application that the event addresses handle it, on this thread, so that no time-out can pass. With
/// kAEWaitReply the reply holds what the handler gave, or its error as 'errn' and 'errs'; the status of the
/// call only says whether the event got there: -600 when it addresses another than the Finder's signature,
/// -1707 when it is no event, -50 for a missing argument and other modes, -1711 when the idle procedure,
/// called once after the handler, ended the waiting. With kAENoReply `reply` may be null. Without an answer
/// it becomes a null descriptor.
OSErr AESend(const AppleEvent* event, AppleEvent* reply, AESendMode mode, AESendPriority priority,
             std::int32_t timeOutInTicks, const AEIdleUPP& idle);

/// The same without priority and idle procedure.
OSStatus AESendMessage(const AppleEvent* event, AppleEvent* reply, AESendMode mode,
                       std::int32_t timeOutInTicks);

} // namespace kestrine
