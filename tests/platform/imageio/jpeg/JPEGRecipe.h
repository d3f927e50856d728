// JPEGRecipe: makes JPEG files with libjpeg-turbo, for tests of the decoders.
#pragma once

#include "platform/host/Bytes.h"

#include <array>
#include <string>
#include <vector>

namespace kestrine::testing {

/// Horizontal and vertical sampling factors of Y, Cb and Cr.
struct SamplingFactors {
    std::array<std::array<int, 2>, 3> factors;
};
inline constexpr SamplingFactors sampling444 = {{{{1, 1}, {1, 1}, {1, 1}}}},
                                 sampling422 = {{{{2, 1}, {1, 1}, {1, 1}}}},
                                 sampling420 = {{{{2, 2}, {1, 1}, {1, 1}}}},
                                 sampling440 = {{{{1, 2}, {1, 1}, {1, 1}}}},
                                 sampling411 = {{{{4, 1}, {1, 1}, {1, 1}}}},
                                 sampling441 = {{{{1, 4}, {1, 1}, {1, 1}}}},
                                 sampling410 = {{{{4, 2}, {1, 1}, {1, 1}}}};

enum class Content { photo, noise, flat };
enum class Codes { standard, optimised, longest };

/// A scan of a progressive file.
struct ScanRecipe {
    std::vector<int> components; ///< 0 to 2
    int first, last;             ///< coefficients, along the zigzag
    int high, low;               ///< bits: the lowest one of earlier scans, and of this one
};

struct JPEGRecipe {
    unsigned width = 48, height = 32;
    bool isGrey = false;
    SamplingFactors sampling = sampling420;
    int quality = 85; ///< 1 to 100; below about 25 some quantisers have 16 bits if `hasWideQuantisers`
    bool hasWideQuantisers = false;
    Content content = Content::photo;
    Codes codes = Codes::standard; ///< with `longest`, nearly all symbols have codes of 10 to 16 bits
    unsigned restartInterval = 0;  ///< in MCUs
    bool isProgressive = false;
    std::vector<ScanRecipe> script; ///< of the scans of a progressive file, instead of the usual one
    int scans = 0; ///< if not 0, a progressive file with this many scans, 1 to 505; requires isGrey
    bool isStoredAsRGB = false;

    /// The recipe in words, for messages.
    std::string description() const;
};

Bytes makeJPEG(const JPEGRecipe& recipe);

/// Scripts of every kind for three components: without and with successive approximation, in few and in many
/// scans, interleaved or not; some end with DC coefficients.
std::vector<std::vector<ScanRecipe>> progressiveScripts();

/// Baseline files that our own decoder supports: every sampling once, the usual samplings with every size
/// from 1 to 40 and a larger one, every quality, restart markers and all kinds of codes.
std::vector<JPEGRecipe> recipesForOurDecoder();

/// Progressive files that our own decoder supports: the same with the usual script, and all scripts.
std::vector<JPEGRecipe> progressiveRecipesForOurDecoder();

} // namespace kestrine::testing
