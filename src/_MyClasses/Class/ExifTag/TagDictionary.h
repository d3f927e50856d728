// The tag dictionary: what ExifTagReader makes of a file and what the accessors read.
// Directory name -> tag key ("%04X") -> value. It is never changed once it has been handed out.
#pragma once

#include "platform/foundation/NSNumber.h"
#include "platform/foundation/text/NSString.h"
#include "platform/host/Bytes.h"

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace kestrine {

/// Types BYTE, SBYTE, UNDEFINED.
using ByteBlock = Bytes;

/// All numeric types, a single number too. Each number keeps the width and sign of its type; a rational is
/// two numbers, numerator and denominator.
using NumberList = std::vector<NSNumber>;

/// NSString for type ASCII.
using TagValue = std::variant<ByteBlock, NSString, NumberList>;

/// By tag key.
using IFDDictionary = std::map<std::string, TagValue, std::less<>>;
/// Null is nil: the directory is absent.
using IFDDictionaryPointer = std::shared_ptr<const IFDDictionary>;

/// By directory name; a name is there only when its directory was read.
using TagDictionary = std::map<std::string, IFDDictionaryPointer, std::less<>>;
/// Null is nil, a file without EXIF, and is told apart from an empty dictionary.
using TagDictionaryPointer = std::shared_ptr<const TagDictionary>;

inline constexpr std::string_view IFD0Name = "IFD0";             ///< the main image
inline constexpr std::string_view IFD1Name = "IFD1";             ///< what follows IFD0
inline constexpr std::string_view exifSubIFDName = "ExifSubIFD"; ///< by IFD0's tag 8769
inline constexpr std::string_view interoperabilityIFDName =
    "InteroperabilityIFD"; ///< by ExifSubIFD's tag A005
inline constexpr std::string_view interoperabilityIFD2Name = "InteroperabilityIFD2"; ///< by IFD1's tag A005

} // namespace kestrine
