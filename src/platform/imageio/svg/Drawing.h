// Drawing: draws SVG documents with librsvg.
#pragma once

#include "platform/host/Bytes.h"
#include "platform/host/FreeDeleter.h"
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

/// The pixels of an area as cairo draws them: numbers of 32 bits with alpha, red, green and blue, multiplied
/// by alpha.
class DrawnArea {
public:
    /// Transparent. No pixels if there is not enough memory.
    DrawnArea(std::uint32_t width, std::uint32_t height);

    std::uint32_t* pixels() { return pixels_.get(); }
    std::uint32_t width() const { return width_; }

    /// The pixels of a row as red, green, blue and alpha, not multiplied; 8 bits.
    void copyRow(std::uint32_t y, std::span<std::uint8_t> into) const;

private:
    std::uint32_t width_;
    std::unique_ptr<std::uint32_t, FreeDeleter> pixels_;
};

/// The fonts must be in use.
Result<DrawnArea> drawArea(const Functions& library, Document& document, NaturalSize size, const Area& area);

} // namespace kestrine::svg
