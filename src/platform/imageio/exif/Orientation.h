// Orientation: how a picture with an EXIF orientation becomes upright.
#pragma once

namespace kestrine {

/// First left and right are exchanged, then the picture is turned clockwise.
struct UprightTurn {
    bool isMirrored = false;
    int quarterTurns = 0; ///< 0 to 3

    bool exchangesSides() const { return quarterTurns % 2 != 0; }
};

/// `orientation` is 1 to 8.
constexpr UprightTurn uprightTurnFor(int orientation) {
    constexpr UprightTurn turns[] = {{false, 0}, {true, 0},  {false, 2}, {true, 2},
                                     {true, 3},  {false, 1}, {true, 1},  {false, 3}};
    return turns[orientation - 1];
}

} // namespace kestrine
