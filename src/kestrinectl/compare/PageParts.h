// PageParts: the style and the script of every page, from the files in page/. CMake makes the source file
// from PageParts.cpp.in.
#pragma once

#include <string_view>

namespace kestrine {

struct PagePart {
    std::string_view text;
    std::string_view digest; ///< the SHA-256 digest of the text, in hexadecimal digits
};

extern const PagePart pageStyle, pageScript;

} // namespace kestrine
