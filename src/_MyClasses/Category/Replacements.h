// Replaces several substrings, one after the other.
#pragma once

#include "_MyClasses/Category/StringUtility.h"

#include <span>

namespace kestrine::StringUtility {

struct Replacement {
    const char16_t* text;
    const char16_t* by;
};

/// Each replacement is applied to the result of the previous one.
inline NSString replacedInOrder(NSString text, std::span<const Replacement> replacements) {
    for (const Replacement& replacement : replacements)
        text = *replaceStringFrom(text, replacement.text, replacement.by);
    return text;
}

} // namespace kestrine::StringUtility
