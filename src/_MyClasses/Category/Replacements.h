// Replacing several texts in a text, one after the other.
#pragma once

#include "_MyClasses/Category/StringUtility.h"

#include <span>

namespace kestrine::StringUtility {

struct Replacement {
    const char16_t* text;
    const char16_t* by;
};

/// Each replacement works on what the one before it has left.
inline NSString replacedInOrder(NSString text, std::span<const Replacement> replacements) {
    for (const Replacement& replacement : replacements)
        text = *replaceStringFrom(text, replacement.text, replacement.by);
    return text;
}

} // namespace kestrine::StringUtility
