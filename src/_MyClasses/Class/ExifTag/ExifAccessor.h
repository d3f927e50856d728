// What the display accessors of ExifTagReader and the description made of them share.
#pragma once

namespace kestrine {

/// What a display accessor answers for a value that is not there; lines with it are left out of a
/// description.
inline constexpr const char16_t* notAvailable = u"N/A";

} // namespace kestrine
