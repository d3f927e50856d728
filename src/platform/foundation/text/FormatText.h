// Text that is printed as the format of a formatted print without arguments, expanded safely: no call
// into the C library's formatter, no argument read, the same result every time.
#pragma once

#include <string>
#include <string_view>

namespace kestrine {

/// What a formatted print of `bytes` shows when every argument is zero:
///   - `%%`, also with flags, width and so on between the two, gives "%";
///   - a complete conversion gives zero in its form ("%d" gives "0", "%5.1f" gives "  0.0"), "%s" gives
///     "(null)", "%p" gives "(nil)"; "%c", "%n" and "%m" give no character; "*" counts as 0;
///   - an unknown conversion letter leaves the text as written;
///   - a conversion that the text ends in is dropped;
///   - the text ends at its first zero byte;
///   - every other byte passes unchanged.
/// Width and precision are held at 4096, and no longer apply once the text has grown by a mebibyte.
std::string expandedFormatText(std::string_view bytes);

} // namespace kestrine
