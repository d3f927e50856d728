// Conversion of strings to bytes without loss. A string that cannot be converted raises an exception.
#pragma once

#include "platform/foundation/text/NSString.h"

namespace kestrine {

inline constexpr const char* NSCharacterConversionException = "NSCharacterConversionException";

/// `UTF8String`: raises NSCharacterConversionException for a lone surrogate, unless it stands for an invalid
/// byte, which is restored.
std::string UTF8String(const NSString& text);

/// `fileSystemRepresentation`: the bytes of a path. Raises NSCharacterConversionException as UTF8String()
/// does, and for a zero character, at which the system would cut the path.
std::string fileSystemRepresentation(const NSString& path);

} // namespace kestrine
