// Text as bytes for those who may not lose any of it: what cannot be converted raises.
#pragma once

#include "platform/foundation/text/NSString.h"

namespace kestrine {

inline constexpr const char* NSCharacterConversionException = "NSCharacterConversionException";

/// `UTF8String`: raises NSCharacterConversionException for a lone surrogate, unless it stands for a byte
/// that was no UTF-8 and becomes that byte again.
std::string UTF8String(const NSString& text);

/// `fileSystemRepresentation`: the bytes of a path, without a zero byte inside, since such a path would be
/// taken for a shorter one. Raises NSCharacterConversionException likewise.
std::string fileSystemRepresentation(const NSString& path);

} // namespace kestrine
