// Drawing: draws SVG documents with librsvg.
#pragma once

#include "platform/coregraphics/PixelBuffer.h"
#include "platform/imageio/svg/Library.h"

#include <memory>

namespace kestrine::svg {

struct DocumentDeleter {
    void (*release)(void*);
    void operator()(Document* document) const { release(document); }
};
using DocumentPointer = std::unique_ptr<Document, DocumentDeleter>;

/// Reads SVG text. It refers to no file and no network, because it has no place of its own. Fails with reason
/// "malformed". The fonts must be in use.
Result<DocumentPointer> readDocument(const Functions& library, ByteView text);

/// The size that the document has by itself, in pixels of 1/96 inch: width and height, else the view box,
/// else what is drawn. Rounded to whole pixels, at least 1; a side that no picture can have stays larger than
/// any.
struct NaturalSize {
    std::uint32_t width, height;
};
NaturalSize naturalSize(const Functions& library, Document& document);

/// Which part of the drawing, in its natural size, is drawn, and how large.
struct Area {
    double xScale, yScale;       ///< pixels of the result per pixel of the natural size
    double left, top;            ///< in natural pixels
    std::uint32_t width, height; ///< of the result, at most 32767
};

/// Pixels with alpha, 8 bits. The fonts must be in use.
Result<PixelBuffer> drawArea(const Functions& library, Document& document, NaturalSize size,
                             const Area& area);

} // namespace kestrine::svg
