// The platform's basic types and the status codes that this system names.
#pragma once

#include "platform/finder/FinderInfo.h"

#include <cstdint>

namespace kestrine {

using OSStatus = std::int32_t;
using OSErr = std::int16_t;
using FourCharCode = std::uint32_t;
using OSType = FourCharCode;
using UniChar = char16_t;

enum : OSStatus {
    noErr = 0,
    ioErr = -36,
    fnfErr = -43,
    paramErr = -50,
    memFullErr = -108,
    errAECoercionFail = -1700,
    errAEDescNotFound = -1701,
    coreFoundationUnknownErr = -4960,
    afpAccessDenied = -5000,
};

} // namespace kestrine
