// htmlText: names and other text from outside in HTML.
#pragma once

#include <string>
#include <string_view>

namespace kestrine {

/// For the content of an element and for the value of an attribute in double or single quotation marks: the
/// characters that have a meaning in HTML become references. Control characters, marks of the reading
/// direction and bytes that are not valid UTF-8 are escaped as shownText() does for a terminal.
std::string htmlText(std::string_view bytes);

} // namespace kestrine
