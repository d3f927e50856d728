// htmlText: names and other text from outside in HTML.
#pragma once

#include <string>
#include <string_view>

namespace kestrine {

/// Does the same as markupText(). Before that, control characters, marks of the reading direction and bytes
/// that are not valid UTF-8 are escaped as shownText() does for a terminal.
std::string htmlText(std::string_view bytes);

} // namespace kestrine
