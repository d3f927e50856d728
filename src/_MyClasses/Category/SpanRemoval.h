// A fast way to remove all spans between two delimiters of any length.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kestrine::StringUtility {

/// The string without its spans, found in one pass. nullopt when removals could affect each other, so that
/// they must be done one by one, and for delimiters of more than 256 code units. Delimiters must not be
/// empty.
std::optional<std::u16string> removedInOneSweep(std::u16string_view text, std::u16string_view opening,
                                                std::u16string_view closing);

} // namespace kestrine::StringUtility
