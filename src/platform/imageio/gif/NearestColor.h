// NearestColor: finds the colour of a palette that looks most like a given one, fast: each cell of the
// colour cube remembers the four colours nearest to its middle, and only these are compared. Where more crowd
// into a cell, the answer may be one that is hardly farther.
#pragma once

#include "platform/imageio/gif/CoveredPicture.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <vector>

namespace kestrine::gif {

/// How much a squared difference in red, green and blue counts.
inline constexpr std::array<int, 3> colorWeights = {3, 4, 2};

class NearestColor {
public:
    /// At most 256 colours, and at least one besides the one at index `skipped`, which is never an answer.
    explicit NearestColor(std::span<const Color> colors, std::optional<std::uint8_t> skipped = {});

    /// The index of the nearest colour; of equally near ones the first.
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

    /// The distance of a colour from another is, but for a term that depends on the other alone, a linear
    /// function: `constant` less the scalar product of `slope` and the other. Both are multiplied by 256 to
    /// make room for the index, so that the least such number tells the nearest colour.
    struct Choice {
        int constant;
        std::array<int, 3> slope;
    };
    using Four = std::array<std::uint8_t, 4>; ///< indices into choices_; fewer are filled up with 0
    static constexpr Four unknown = {255, 255, 255, 255};
    struct List {
        std::uint32_t begin = 0, count = 0; ///< in listed_; empty while unknown
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
    std::vector<std::uint8_t> listed_; ///< indices into choices_: all of them, then the lists that were made
    List all_;
    std::array<std::vector<List>, listedLevels> lists_;
};

} // namespace kestrine::gif
