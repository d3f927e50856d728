#include "kestrinectl/sets/SetNames.h"

#include "platform/imageio/OutputFormats.h"

#include <algorithm>
#include <array>

namespace kestrine {

namespace {

/// The names of the types, in the order of ResizeType.
constexpr std::array<const char*, 3> resizeTypes = {"size", "ratio", "maxSize"};

template <std::size_t count>
std::optional<std::string> nameAt(const std::array<const char*, count>& names, std::int32_t value) {
    const bool isKnown = value >= 0 && value < static_cast<std::int32_t>(count);
    return isKnown ? std::optional<std::string>(names[static_cast<std::size_t>(value)]) : std::nullopt;
}

template <std::size_t count>
std::optional<std::int32_t> positionOf(const std::array<const char*, count>& names, const std::string& name) {
    const auto found = std::ranges::find(names, name);
    return found == names.end() ? std::nullopt
                                : std::optional(static_cast<std::int32_t>(found - names.begin()));
}

} // namespace

std::optional<std::string> nameOfFormat(std::int32_t formatType) {
    const OutputFormat* format = outputFormatNumbered(formatType);
    return format == nullptr ? std::nullopt : std::optional(std::string(format->name));
}

std::optional<std::int32_t> formatNamed(const std::string& name) {
    const OutputFormat* format = kestrine::formatNamed(name, presetFormats());
    return format == nullptr ? std::nullopt : std::optional(static_cast<std::int32_t>(format->type));
}

std::optional<std::string> nameOfResizeType(std::int32_t resizeType) {
    return nameAt(resizeTypes, resizeType);
}
std::optional<std::int32_t> resizeTypeNamed(const std::string& name) { return positionOf(resizeTypes, name); }

} // namespace kestrine
