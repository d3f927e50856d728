// StreamedRows: the rows of a WebP picture while it is decoded.
#pragma once

#include "platform/coregraphics/RowSource.h"
#include "platform/host/Bytes.h"
#include "platform/imageio/webp/Library.h"

#include <memory>

namespace kestrine::webp {

/// A picture inside a file.
struct Frame {
    ByteView chunks;
    bool isLossless = false;
};

/// `frame` lies in `file`. Rows of 8 bits in RGB or RGBA are decoded as they are
/// read and not kept; besides them, the library holds the alpha of lossy pictures, and lossless ones in 4
/// bytes per pixel.
Result<RowSourcePointer> streamedRows(const Functions& library, std::shared_ptr<const Bytes> file,
                                      const Frame& frame, const RowFormat& format);

} // namespace kestrine::webp
