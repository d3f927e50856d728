// FallbackRows: the rows of a decoder that may give up in the middle, with another one ready to take its
// place.
#pragma once

#include "platform/coregraphics/RowSource.h"

#include <functional>

namespace kestrine::jpeg {

using RowOpener = std::function<Result<RowSourcePointer>()>;

/// The rows of `first` as long as it has some. When it fails, `openSecond` starts the other decoder at the
/// top, the rows that were delivered already are skipped, and it goes on; whoever reads notices nothing, as
/// long as both give the same rows up to there.
///
/// Those of our own JPEG decoder and of the general library are the same up to there. Ours fails at an MCU
/// whose codes are unknown or overrun a block, whose bits are not all there, or which something else than the
/// restart marker that is due follows. For every MCU before it:
///  - its bits lie before the first marker of its segment, and the library takes the same bits with the same
///    codes. What it looks at beyond an MCU's last bit (it, too, fills up ahead, and starts an MCU again more
///    slowly when that meets a marker) changes no coefficient: it refills with what it can get, and zeros
///    take the place of bits only when codes ask for more than there are;
///  - the segments before it ended where ours did, with their own markers behind less than a byte of filling,
///    so the library was neither out of step nor out of data, its two lasting states.
/// And a row is delivered only when a whole band is there, checked to its last bit, and the one below, too,
/// where colour is smoothed across the border. What follows has no part in it.
RowSourcePointer rowsWithFallback(RowSourcePointer first, RowOpener openSecond);

} // namespace kestrine::jpeg
