// BaselineRows: the rows of a baseline JPEG by our own decoder, grey or RGB, sample by sample those of the
// general library with its usual smoothing of colour.
#pragma once

#include "platform/coregraphics/RowSource.h"
#include "platform/host/files/ByteReader.h"

namespace kestrine::jpeg {

/// Starts decoding to `eighths` (8, 4, 2 or 1). Fails with reason "refused", here or at any row, where the
/// file is not of the kind that it takes.
///
/// The rows up to a failure are the general library's, so that it may go on behind them. Ours fails at an MCU
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
Result<RowSourcePointer> openBaselineRows(std::shared_ptr<const ByteReader> reader, int eighths);

} // namespace kestrine::jpeg
