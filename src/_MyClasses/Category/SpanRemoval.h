// A shortcut for removing every span between two delimiters from a long text.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kestrine::StringUtility {

/// What is left when span after span is taken and its text removed wherever it occurs, found in a single
/// sweep. Nothing when the removals might influence each other: then the order of the steps decides, and
/// they must really be taken one by one. Nothing for long delimiters, too. No delimiter is empty.
std::optional<std::u16string> removedInOneSweep(std::u16string_view text, std::u16string_view opening,
                                                std::u16string_view closing);

} // namespace kestrine::StringUtility
