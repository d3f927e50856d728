// The words for the two enumerations of a set, in options, JSON and descriptions.
#pragma once

#include "models/ResizeSet.h"

#include <optional>
#include <string>

namespace kestrine {

/// A resizeType that means no scaling.
inline constexpr std::int32_t unscaledResizeType = 3;

/// The functions below return nullopt for an unknown value or word.
std::optional<std::string> nameOfFormat(std::int32_t formatType);
std::optional<std::int32_t> formatNamed(const std::string& name);
std::optional<std::string> nameOfResizeType(std::int32_t resizeType);
std::optional<std::int32_t> resizeTypeNamed(const std::string& name);

} // namespace kestrine
