// TypeEncoding: a parsed type string such as "i", "[12c]" or "{?=ff}".
#pragma once

#include "platform/host/Result.h"

#include <string_view>
#include <vector>

namespace kestrine {

/// One code or bracket of a type string. The items inside a bracket follow directly.
struct TypeItem {
    char code;
    /// How often the items inside are repeated: the length of an array; 1 for all others.
    std::uint64_t count;
    /// The position after this item and the items inside it.
    std::size_t end;
};

/// Never empty.
using TypeEncoding = std::vector<TypeItem>;

/// Fails with malformed for an empty string, an unknown code, unbalanced brackets, and brackets nested deeper
/// than typedstream::depthLimit.
Result<TypeEncoding> parseTypeEncoding(std::string_view text);

/// The type code for numbers of type T.
template <class T>
inline constexpr char typeCode = '\0';
template <>
inline constexpr char typeCode<std::int8_t> = 'c';
template <>
inline constexpr char typeCode<std::uint8_t> = 'C';
template <>
inline constexpr char typeCode<std::int16_t> = 's';
template <>
inline constexpr char typeCode<std::uint16_t> = 'S';
template <>
inline constexpr char typeCode<std::int32_t> = 'i';
template <>
inline constexpr char typeCode<std::uint32_t> = 'I';
template <>
inline constexpr char typeCode<std::int64_t> = 'q';
template <>
inline constexpr char typeCode<std::uint64_t> = 'Q';
template <>
inline constexpr char typeCode<float> = 'f';
template <>
inline constexpr char typeCode<double> = 'd';

} // namespace kestrine
