// Shared by the display accessors and the description of ExifTagReader.
#pragma once

namespace kestrine {

/// The display string of a missing value; descriptions leave such lines out.
inline constexpr const char16_t* notAvailable = u"N/A";

} // namespace kestrine
