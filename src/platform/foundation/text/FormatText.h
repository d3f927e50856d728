// Text that is used as a printf format without arguments. It is expanded without calling the C library's
// formatter and without reading any arguments, so the result is always the same.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace kestrine {

/// The output of printf for the format `bytes` if all arguments are zero:
///   - `%%`, also with flags, width and so on between the percent signs, gives "%";
///   - a complete conversion gives zero in its form ("%d" gives "0", "%5.1f" gives "  0.0");
///   - "%s" gives "(null)", "%p" gives "(nil)"; "%c", "%n" and "%m" give no character; "*" counts as 0;
///   - a conversion with an unknown letter stays as it is;
///   - an incomplete conversion at the end is removed;
///   - a zero byte ends the text;
///   - all other bytes stay unchanged.
/// Width and precision are limited to 4096. They are ignored when the output is more than 1 MiB longer than
/// the input.
std::string expandedFormatText(std::string_view bytes);

/// Passes the same output on in pieces. Allocates no memory.
using FormatTextOutput = std::function<void(std::string_view piece)>;
void expandFormatText(std::string_view bytes, const FormatTextOutput& text);

} // namespace kestrine
