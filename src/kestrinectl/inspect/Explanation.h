// Explanation: what a picture is, and what presets would make of it and why. Reads only headers.
#pragma once

#include "models/ResizeSet.h"

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace kestrine {

/// What a preset would make of a file.
struct ExplainedSet {
    std::string set;                ///< its name
    std::vector<std::string> steps; ///< sentences, in order
    std::string path;               ///< of the result; "" if there is none
    const OutputFormat* format = nullptr;
    std::uint32_t width = 0, height = 0; ///< in pixels; 0 if there is no result
};

struct Explanation {
    std::string file; ///< as typed
    std::string format;
    std::uint32_t width = 0, height = 0; ///< as stored
    unsigned bitsPerSample = 8;
    std::string color;   ///< "RGB with transparency"
    std::string profile; ///< its name; "" if there is none
    bool hasProfile = false;
    int orientation = 1;       ///< as the file states it
    int narrowOrientation = 0; ///< as presets see it; 0 for none
    std::string holdsMore;     ///< what the result would leave out; "" for nothing
    std::vector<ExplainedSet> sets;
};

/// Throws CommandError if the file is not a readable picture.
Explanation explain(const std::string& file, const ResizeSets& sets);

std::vector<std::string> linesOf(const Explanation& picture);
nlohmann::ordered_json toJSON(const Explanation& picture);

} // namespace kestrine
