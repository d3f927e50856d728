// OwnRows: the rows of a baseline or progressive JPEG from our own decoder, grey or RGB. Every sample equals
// that of libjpeg-turbo with its default smoothing of chroma.
#pragma once

#include "platform/coregraphics/RowSource.h"
#include "platform/host/files/ByteReader.h"
#include "platform/imageio/DamageRecord.h"
#include "platform/imageio/jpeg/own/FrameHeader.h"

namespace kestrine::jpeg {

/// Starts decoding at `eighths` (8, 4, 2 or 1) of the full size. `header` is that of the file. Fails with
/// reason "refused", here or at any row, when this decoder does not support the file, and with "malformed" at
/// a row whose bits are invalid. The latter is also recorded in `damage`, which may be null, because the
/// library may invent such pixels without a message.
///
/// The rows delivered before a failure equal those of libjpeg-turbo ("the library"), so the library can
/// deliver the remaining rows. Proof:
///  1. Our decoder fails at the first MCU that contains an unknown code, whose symbols overrun a block, whose
///     bits are not all present, or which is not followed by the expected restart marker.
///  2. For each MCU before that one, all bits lie before the first marker of its segment, and the library
///     takes the same bits with the same codes.
///  3. What the library reads after the last bit of an MCU changes no coefficient of that MCU. It also reads
///     ahead, and when it meets a marker it decodes the MCU again more slowly; but zeros replace bits only
///     when codes ask for more bits than there are.
///  4. All earlier segments ended at the same byte for both, with the expected marker after less than a byte
///     of padding. So the library was neither out of step nor out of data; it keeps no other state that
///     damage can change.
///  5. Claims 1 to 4 hold for each scan of a progressive file. Both decoders see the same scans with the same
///     tables, because nothing that the library could take for another scan, table or end is accepted between
///     them (ScanList.h); even after damage in one scan it begins the next one at the same marker. All bits
///     of all coefficients are sent, so it does not smooth blocks. What a scan does to a block depends only
///     on its earlier blocks and on this block in earlier scans. So a failure in one scan, whose MCUs are
///     behind in the file, changes no block above in any scan.
///  6. A row is delivered only after all scans of its band were decoded completely; if chroma is smoothed
///     across the border to the next band, also those of that band. No later MCU contributes to the row.
Result<RowSourcePointer> openOwnRows(std::shared_ptr<const ByteReader> reader, const FrameHeader& header,
                                     int eighths, std::shared_ptr<DamageRecord> damage = nullptr);

} // namespace kestrine::jpeg
