// ConvertLines: the result of one file in words.
#pragma once

#include "kestrinectl/convert/ConvertResult.h"

namespace kestrine {

/// How much is printed about successful conversions.
enum class ConvertDetail : std::uint8_t {
    none,  ///< nothing, only complaints
    lines, ///< a line per result
    all,   ///< also sizes, times, and files that needed no conversion
};

/// Prints lines to standard output, and warnings and complaints to standard error.
void printResult(const ConvertResult& result, ConvertDetail detail);

/// Only the warnings and complaints.
void printMessages(const ConvertResult& result, ConvertDetail detail);

} // namespace kestrine
