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
/// whose bits are damaged, missing or followed by something unexpected. For all MCUs before it every bit was
/// read from before the odd place, where the library reads the same bits with the same codes; and a row is
/// delivered only when all MCUs are there that have a part in it, the one below included where colour is
/// smoothed across the border.
RowSourcePointer rowsWithFallback(RowSourcePointer first, RowOpener openSecond);

} // namespace kestrine::jpeg
