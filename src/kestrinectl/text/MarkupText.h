// markupText: a string in HTML or XML.
#pragma once

#include <string>
#include <string_view>

namespace kestrine {

/// The text for the content of an element, or for the value of an attribute in double or single quotation
/// marks: the characters that have a meaning in HTML or XML become references.
std::string markupText(std::string_view text);

} // namespace kestrine
