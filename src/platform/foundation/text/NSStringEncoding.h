// String encodings with the platform's numbers, and the strict decoding of bytes.
#pragma once

#include "platform/foundation/text/NSString.h"
#include "platform/host/Bytes.h"

namespace kestrine {

using NSStringEncoding = std::uint32_t;

inline constexpr NSStringEncoding NSJapaneseEUCStringEncoding = 3;
inline constexpr NSStringEncoding NSUTF8StringEncoding = 4;
inline constexpr NSStringEncoding NSISOLatin1StringEncoding = 5;
inline constexpr NSStringEncoding NSNonLossyASCIIStringEncoding = 7;
inline constexpr NSStringEncoding NSShiftJISStringEncoding = 8;
inline constexpr NSStringEncoding NSUnicodeStringEncoding = 10;
inline constexpr NSStringEncoding NSWindowsCP1251StringEncoding = 11;
inline constexpr NSStringEncoding NSWindowsCP1252StringEncoding = 12;
inline constexpr NSStringEncoding NSWindowsCP1253StringEncoding = 13;
inline constexpr NSStringEncoding NSWindowsCP1254StringEncoding = 14;
inline constexpr NSStringEncoding NSWindowsCP1250StringEncoding = 15;
inline constexpr NSStringEncoding NSISO2022JPStringEncoding = 21;
inline constexpr NSStringEncoding NSMacOSRomanStringEncoding = 30;

/// `initWithData:encoding:`: the string, or nil if any byte is not valid in the encoding. Valid are:
///   - UTF-8: shortest forms of code points other than surrogates;
///   - Unicode: UTF-16 in the order of its byte-order mark, by default big-endian, without lone surrogates;
///   - non-lossy ASCII: bytes below 128; a backslash starts "\\", three octal digits up to 377, or "u" with
///     four hexadecimal digits;
///   - Latin 1: all bytes;
///   - Mac OS Roman and the Windows code pages: bytes with an assigned character;
///   - Shift JIS (with the vendor characters of Windows) and EUC-JP (with JIS X 0212): complete characters,
///     without C1 control characters;
///   - ISO-2022-JP: bytes below 128, known escape sequences, complete characters.
/// A byte-order mark at the start of UTF-8 or UTF-16 is removed. The result is nil for any other encoding,
/// and without ICU also for the last three groups.
OptionalString decodedText(ByteView bytes, NSStringEncoding encoding);

} // namespace kestrine
