// Placement: which part of a stored picture is shown, and how it is turned.
#pragma once

#include "platform/imageio/heif/TopLevelBoxes.h"

namespace kestrine::heif {

struct Size {
    std::uint32_t width = 0;
    std::uint32_t height = 0;

    bool operator==(const Size&) const = default;
};

/// A part of a picture, in pixels from its top left corner.
struct Area {
    std::uint32_t left = 0;
    std::uint32_t top = 0;
    Size size;

    bool operator==(const Area&) const = default;
};

/// The picture is cut to an area of the stored pixels, then mirrored left to right, then turned. Every
/// sequence of cuts, turns and reflections can be written in this way.
class Placement {
public:
    explicit Placement(const Size& stored) : area_{0, 0, stored} {}

    const Area& area() const { return area_; }
    bool isMirrored() const { return isMirrored_; }
    int quarterTurns() const { return quarterTurns_; } ///< clockwise, 0 to 3

    /// Whether all stored pixels are shown as they are, except for the turn.
    bool keepsRowsOf(const Size& stored) const { return !isMirrored_ && area_ == Area{0, 0, stored}; }

    /// After all steps.
    Size size() const;

    void turn(int clockwiseQuarters);
    void exchangeLeftAndRight();
    void exchangeTopAndBottom();
    /// `area` lies inside the picture as it is shown so far.
    void cut(const Area& area);

private:
    Area area_;
    bool isMirrored_ = false;
    int quarterTurns_ = 0;
};

/// Adds the step that a property describes: "clap" (cut), "irot" (turn) or "imir" (reflection); other
/// properties do nothing. Fails if the values are impossible.
Result<void> addTransformation(Placement& placement, const Box& property);

} // namespace kestrine::heif
