#include "platform/imageio/svg/Drawing.h"

#include "platform/coregraphics/Premultiplication.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

namespace kestrine::svg {

namespace {

constexpr double pixelsPerInch = 96;

/// Pixels per unit, in the order of RsvgUnit; 0 for units that depend on something else.
constexpr std::array pixelsPerUnit = {
    0.0,                  // percent
    1.0,                  // px
    0.0,                  // em
    0.0,                  // ex
    pixelsPerInch,        // in
    pixelsPerInch / 2.54, // cm
    pixelsPerInch / 25.4, // mm
    pixelsPerInch / 72,   // pt
    pixelsPerInch / 6,    // pc
};

/// 0 if the length is not absolute.
double pixelsOf(bool isSet, const Length& length) {
    const bool isKnown = length.unit >= 0 && static_cast<std::size_t>(length.unit) < pixelsPerUnit.size();
    return isSet && isKnown ? length.length * pixelsPerUnit[static_cast<std::size_t>(length.unit)] : 0;
}

std::uint32_t wholePixels(double length) {
    constexpr double most = 4e9;
    return static_cast<std::uint32_t>(std::clamp(std::floor(length + 0.5), 1.0, most)); // NaN gives 1
}

/// The size of what is drawn, from the origin. Percentages refer to the size that pages give to such
/// drawings.
Rectangle extentsOf(const Functions& library, Document& document) {
    constexpr Rectangle viewport{0, 0, 300, 150};
    Rectangle ink{}, logical{};
    library.extents(&document, nullptr, &viewport, &ink, &logical, nullptr);
    return {0, 0, ink.x + ink.width, ink.y + ink.height};
}

} // namespace

Result<DocumentPointer> readDocument(const Functions& library, ByteView text) {
    DocumentPointer document(library.read(text.data(), text.size(), nullptr),
                             DocumentDeleter{library.release});
    if (document == nullptr)
        return Failure{Reason::malformed, "the SVG drawing is damaged"};
    library.setResolution(document.get(), pixelsPerInch);
    return document;
}

NaturalSize naturalSize(const Functions& library, Document& document) {
    int hasWidth = 0, hasHeight = 0, hasViewBox = 0;
    Length width{}, height{};
    Rectangle box{};
    library.dimensions(&document, &hasWidth, &width, &hasHeight, &height, &hasViewBox, &box);
    double x = pixelsOf(hasWidth != 0, width), y = pixelsOf(hasHeight != 0, height);
    if (!(x > 0 && y > 0)) {
        const bool hasBox = hasViewBox != 0 && box.width > 0 && box.height > 0;
        const Rectangle shape = hasBox ? box : extentsOf(library, document);
        const bool hasShape = shape.width > 0 && shape.height > 0;
        if (x > 0)
            y = hasShape ? x * shape.height / shape.width : x;
        else if (y > 0)
            x = hasShape ? y * shape.width / shape.height : y;
        else
            x = shape.width, y = shape.height;
    }
    return {wholePixels(x), wholePixels(y)};
}

// calloc() takes whole pages from the system, which are zero already and cost nothing before they are drawn
// on.
DrawnArea::DrawnArea(std::uint32_t width, std::uint32_t height)
    : width_(width),
      pixels_(static_cast<std::uint32_t*>(std::calloc(std::size_t{width} * height, sizeof(std::uint32_t)))) {}

void DrawnArea::copyRow(std::uint32_t y, std::span<std::uint8_t> into) const {
    const std::span<const std::uint32_t> row(pixels_.get() + std::size_t{y} * width_, width_);
    for (std::size_t x = 0; x < row.size(); ++x) {
        const std::uint32_t pixel = row[x];
        into[4 * x] = static_cast<std::uint8_t>(pixel >> 16);
        into[4 * x + 1] = static_cast<std::uint8_t>(pixel >> 8);
        into[4 * x + 2] = static_cast<std::uint8_t>(pixel);
        into[4 * x + 3] = static_cast<std::uint8_t>(pixel >> 24);
    }
    undoPremultiplication(4, into);
}

Result<DrawnArea> drawArea(const Functions& library, Document& document, NaturalSize size, const Area& area) {
    constexpr int argb32 = 0;
    DrawnArea drawn(area.width, area.height);
    if (drawn.pixels() == nullptr)
        return Failure{Reason::outOfMemory, "not enough memory to draw the SVG drawing"};
    const std::unique_ptr<Surface, void (*)(Surface*)> surface(
        library.createSurface(reinterpret_cast<std::uint8_t*>(drawn.pixels()), argb32,
                              static_cast<int>(area.width), static_cast<int>(area.height),
                              static_cast<int>(4 * area.width)),
        library.destroySurface);
    const std::unique_ptr<Context, void (*)(Context*)> context(library.createContext(surface.get()),
                                                               library.destroyContext);
    library.scale(context.get(), area.xScale, area.yScale);
    library.translate(context.get(), -area.left, -area.top);
    const Rectangle viewport{0, 0, static_cast<double>(size.width), static_cast<double>(size.height)};
    if (library.draw(&document, context.get(), &viewport, nullptr) == 0
        || library.statusOf(context.get()) != 0)
        return Failure{Reason::malformed, "the SVG drawing cannot be drawn"};
    library.flush(surface.get());
    return drawn;
}

} // namespace kestrine::svg
