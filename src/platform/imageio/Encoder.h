// Encoder: makes a file of rows.
#pragma once

#include "platform/host/ByteSink.h"
#include "platform/imageio/ImageCodec.h"

namespace kestrine {

/// Consumes all rows, which suit the format and are not too large for it (OutputFormats.h), and writes the
/// bytes of the file. After a failure those written so far are of no use.
using Encoder = Result<void> (*)(RowSource& rows, const EncodingOptions& options, ByteSink& file);

/// The bytes that an encoder writes.
inline Result<Bytes> encoded(Encoder encoder, RowSource& rows, const EncodingOptions& options) {
    BytesSink bytes;
    TRY(encoder(rows, options, bytes));
    return bytes.take();
}

} // namespace kestrine
