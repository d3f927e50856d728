// String encodings by the platform's numbers, and the strict decoding of bytes into text.
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

/// `initWithData:encoding:`: the text, or nil as soon as one byte does not belong to the encoding:
///   - UTF-8: shortest forms of code points that are no surrogates;
///   - Unicode: UTF-16 in the order of its byte-order mark, big-endian without one; every surrogate paired;
///   - non-lossy ASCII: bytes below 128; a backslash begins "\\", "\" and three octal digits up to 377, or
///     "\u" and four hexadecimal digits;
///   - Latin 1: any byte;
///   - Mac OS Roman and the Windows code pages: bytes that have a character;
///   - Shift JIS (with the vendor characters of Windows) and EUC-JP (with JIS X 0212): whole characters of
///     their sets; C1 control characters belong to neither;
///   - ISO-2022-JP: bytes below 128, known escape sequences, whole characters.
/// A byte-order mark at the start of UTF-8 or UTF-16 is no part of the text. A number that is none of these
/// decodes nothing, and so do the last three groups where ICU is missing.
OptionalString decodedText(ByteView bytes, NSStringEncoding encoding);

} // namespace kestrine
