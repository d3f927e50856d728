// The tag dictionary: the tags that ExifTagReader reads from a file.
// Directory name -> tag key ("%04X") -> value. Immutable once tagDictionary() has returned it.
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

/// The value of types BYTE, SBYTE and UNDEFINED.
using ByteBlock = Bytes;

/// The value of all numeric types, also of a single number. Each number has the width and sign of its type; a
/// rational is two numbers, numerator and denominator.
using NumberList = std::vector<NSNumber>;

/// An NSString is the value of type ASCII.
using TagValue = std::variant<ByteBlock, NSString, NumberList>;

/// The values of one directory, by tag key.
using IFDDictionary = std::map<std::string, TagValue, std::less<>>;
/// Null is nil: the directory is absent.
using IFDDictionaryPointer = std::shared_ptr<const IFDDictionary>;

/// The directories of a file, by name; contains only those that were read.
using TagDictionary = std::map<std::string, IFDDictionaryPointer, std::less<>>;
/// Null is nil: the file has no EXIF data. That differs from an empty dictionary.
using TagDictionaryPointer = std::shared_ptr<const TagDictionary>;

inline constexpr std::string_view IFD0Name = "IFD0";             ///< the main image
inline constexpr std::string_view IFD1Name = "IFD1";             ///< the directory after IFD0
inline constexpr std::string_view exifSubIFDName = "ExifSubIFD"; ///< at the offset in IFD0's tag 8769
inline constexpr std::string_view interoperabilityIFDName =
    "InteroperabilityIFD"; ///< at the offset in ExifSubIFD's tag A005
inline constexpr std::string_view interoperabilityIFD2Name =
    "InteroperabilityIFD2"; ///< at the offset in IFD1's tag A005

} // namespace kestrine
