// NearestColor: finds the colour of a palette that is most similar to a given one. To be fast, each cell of
// the colour cube stores the four colours nearest to its middle, and only these are compared. If more than
// four are close, the result may be slightly farther than the nearest colour.
#pragma once

#include "platform/imageio/gif/CoveredPicture.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <vector>

namespace kestrine::gif {

/// Weights of the squared differences in red, green and blue.
inline constexpr std::array<int, 3> colorWeights = {3, 4, 2};

class NearestColor {
public:
    /// Takes at most 256 colours, and at least one besides the one at index `skipped`, which is never a
    /// result.
    explicit NearestColor(std::span<const Color> colors, std::optional<std::uint8_t> skipped = {});

    /// The index of the nearest colour; the first one of several equally near colours.
    std::uint8_t indexOf(Color color) {
        Four& four = fours_[cellOf(color, finestLevel)];
        if (four == unknown)
            four = fourNearest(color);
        const auto distanceOf = [&](std::size_t i) {
            return distance(choices_[four[i]], color.red, color.green, color.blue);
        };
        const int least =
            std::min(std::min(distanceOf(0), distanceOf(1)), std::min(distanceOf(2), distanceOf(3)));
        return static_cast<std::uint8_t>(least);
    }

private:
    /// A cell of level n is 2^(8-n) wide along every axis.
    static constexpr unsigned coarsestLevel = 3, listedLevels = 2, finestLevel = coarsestLevel + listedLevels;

    /// Without a term that depends on `other` alone, the distance of this colour to `other` is a linear
    /// function: `constant` minus the scalar product of `slope` and `other`. Both are multiplied by 256, and
    /// `constant` has the index of the colour in its low byte, so the minimum also gives the index of the
    /// nearest colour.
    struct Choice {
        int constant;
        std::array<int, 3> slope;
    };
    using Four = std::array<std::uint8_t, 4>; ///< indices into choices_; filled up with 0
    static constexpr Four unknown = {255, 255, 255, 255};
    struct List {
        std::uint32_t begin = 0, count = 0; ///< a range of listed_; empty while unknown
    };

    static std::size_t cellOf(Color color, unsigned level) {
        const unsigned shift = 8 - level;
        return (std::size_t{color.red} >> shift << level | std::size_t{color.green} >> shift) << level
               | std::size_t{color.blue} >> shift;
    }
    static int distance(const Choice& choice, int red, int green, int blue) {
        return choice.constant - choice.slope[0] * red - choice.slope[1] * green - choice.slope[2] * blue;
    }

    Four fourNearest(Color color);
    List listFor(Color color, unsigned level);
    List narrowed(List from, Color color, unsigned level);

    std::vector<Choice> choices_;
    std::vector<Four> fours_;
    std::vector<std::uint8_t> listed_; ///< indices into choices_: first all of them, then the lists of cells
    List all_;
    std::array<std::vector<List>, listedLevels> lists_;
};

} // namespace kestrine::gif
