// The platform's basic types and the status codes that this system uses.
#pragma once

#include "platform/finder/FinderInfo.h"

#include <cstdint>

namespace kestrine {

using OSStatus = std::int32_t;
using OSErr = std::int16_t;
using FourCharCode = std::uint32_t;
using OSType = FourCharCode;
using UniChar = char16_t;
using Size = std::int64_t; ///< a number of bytes

enum : OSStatus {
    noErr = 0,
    fnfErr = -43,
    paramErr = -50,
    memFullErr = -108,
    nilHandleErr = -109,
    procNotFound = -600,
    errFSBadFSRef = -1401,
    errFSOperationNotSupported = -1426,
    errAECoercionFail = -1700,
    errAEDescNotFound = -1701,
    errAECorruptData = -1702,
    errAEWrongDataType = -1703,
    errAENotAEDesc = -1704,
    errAENotAppleEvent = -1707,
    errAEEventNotHandled = -1708,
    errAEWaitCanceled = -1711,
    errAENoSuchObject = -1728,
    coreFoundationUnknownErr = -4960,
    afpAccessDenied = -5000,
    errAEBuildSyntaxError = -10206,
};

} // namespace kestrine
