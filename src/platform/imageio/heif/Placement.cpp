#include "platform/imageio/heif/Placement.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace kestrine::heif {

namespace {

struct Interval {
    std::uint32_t start, length;
};

/// The middle of the aperture lies `offset` from the middle of a side. Where that is between two pixels, the
/// aperture starts at the earlier one. What lies outside the picture is cut away; nullopt if nothing is left.
std::optional<Interval> apertureIn(std::uint32_t side, double length, double offset) {
    const double rounded = std::floor(length + 0.5);
    const double start = std::floor(offset + (side - rounded) / 2);
    if (!(rounded >= 1) || !std::isfinite(start))
        return std::nullopt;
    const double first = std::max(start, 0.0), end = std::min(start + rounded, static_cast<double>(side));
    if (!(first < end))
        return std::nullopt;
    return Interval{static_cast<std::uint32_t>(first), static_cast<std::uint32_t>(end - first)};
}

/// A fraction of a numerator, which may be negative, and a denominator; 0 / 0 and the like are not finite.
double fraction(Cursor& cursor) {
    const double numerator = cursor.s32();
    return numerator / cursor.u32();
}

Result<void> cutToAperture(Placement& placement, Cursor cursor) {
    const double width = fraction(cursor), height = fraction(cursor);
    const double right = fraction(cursor), down = fraction(cursor);
    const Size size = placement.size();
    const std::optional<Interval> x = apertureIn(size.width, width, right);
    const std::optional<Interval> y = apertureIn(size.height, height, down);
    if (!cursor.isSound() || !x || !y)
        return damagedFile("the picture is cut to nothing");
    placement.cut({x->start, y->start, {x->length, y->length}});
    return {};
}

} // namespace

Size Placement::size() const {
    return quarterTurns_ % 2 == 0 ? area_.size : Size{area_.size.height, area_.size.width};
}

void Placement::turn(int clockwiseQuarters) { quarterTurns_ = (quarterTurns_ + clockwiseQuarters) % 4; }

void Placement::exchangeLeftAndRight() {
    // A reflection after a turn is the opposite turn after a reflection.
    quarterTurns_ = (4 - quarterTurns_) % 4;
    isMirrored_ = !isMirrored_;
}

void Placement::exchangeTopAndBottom() {
    exchangeLeftAndRight();
    turn(2);
}

void Placement::cut(const Area& area) {
    const Size whole = area_.size; // mirrored, but not turned
    const auto [width, height] = area.size;
    const std::uint32_t left = area.left, top = area.top;
    Area upright = area;
    switch (quarterTurns_) {
    case 1:
        upright = {top, whole.height - left - width, {height, width}};
        break;
    case 2:
        upright = {whole.width - left - width, whole.height - top - height, {width, height}};
        break;
    case 3:
        upright = {whole.width - top - height, left, {height, width}};
        break;
    default:
        break;
    }
    if (isMirrored_)
        upright.left = whole.width - upright.left - upright.size.width;
    area_ = {area_.left + upright.left, area_.top + upright.top, upright.size};
}

Result<void> addTransformation(Placement& placement, const Box& property) {
    Cursor cursor(property.content);
    if (property.type == fourCC("clap"))
        return cutToAperture(placement, cursor);
    if (property.type == fourCC("irot"))
        placement.turn((4 - (cursor.u8() & 3)) % 4); // stored counter-clockwise
    else if (property.type == fourCC("imir") && (cursor.u8() & 1) != 0)
        placement.exchangeLeftAndRight();
    else if (property.type == fourCC("imir"))
        placement.exchangeTopAndBottom();
    return {};
}

} // namespace kestrine::heif
