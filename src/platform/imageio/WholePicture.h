// WholePicture: rows of formats that are decoded as a whole.
#pragma once

#include "platform/coregraphics/PixelBuffer.h"

#include <functional>

namespace kestrine {

/// Rows of `format`. `decode` is called once, for the first row, on the thread that reads it; its pixels must
/// have that format.
RowSourcePointer rowsOfWholePicture(const RowFormat& format, std::function<Result<PixelBuffer>()> decode);

} // namespace kestrine
