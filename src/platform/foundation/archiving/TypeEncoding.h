// TypeEncoding: a type string such as "i", "[12c]" or "{?=ff}", checked once and then walked many times.
#pragma once

#include "platform/host/Result.h"

#include <string_view>
#include <vector>

namespace kestrine {

/// One code or bracket of a type string. The items inside a bracket follow it directly.
struct TypeItem {
    char code;
    /// How often the items inside stand in a row: the number of an array, 1 for all others.
    std::uint64_t count;
    /// Position of the item after this one and all that is inside it.
    std::size_t end;
};

/// Never empty.
using TypeEncoding = std::vector<TypeItem>;

/// Fails on an empty text, an unknown code, and brackets that do not match or nest too deep.
Result<TypeEncoding> parseTypeEncoding(std::string_view text);

/// The code under which a number of type T is archived.
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
