// StoredPixels: decodes the pictures of ICNS files that are not files themselves. They have at most 1024 x
// 1024 pixels.
#pragma once

#include "platform/coregraphics/PixelBuffer.h"
#include "platform/imageio/icns/Elements.h"

namespace kestrine::icns {

/// The picture of `element` as RGB with alpha. Alpha comes from the mask of the same size in `elements`, else
/// from a mask of bits, else all pixels are opaque.
Result<PixelBuffer> decodeStored(const ByteReader& reader, const Element& element,
                                 const std::vector<Element>& elements);

} // namespace kestrine::icns
