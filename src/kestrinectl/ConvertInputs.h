// ConvertInputs: the pictures that the arguments of `convert` stand for.
#pragma once

#include "models/ResizeSet.h"

#include <optional>
#include <string>
#include <vector>

namespace kestrine {

/// One picture to be converted.
struct ConvertInput {
    std::string shown;                     ///< as typed, or as typed for its folder with its name behind
    std::string path;                      ///< absolute
    std::optional<std::string> rootFolder; ///< the folder that was typed and in which it was found; absolute
};

/// A file stands for itself, be it a picture or not. A folder stands for the pictures in it, by their content
/// and in the order of their names, those in its subfolders too when `recursive`; hidden ones and what lies
/// in an output folder of `sets` are left out. Throws CommandError for a folder that cannot be read.
std::vector<ConvertInput> convertInputs(const std::vector<std::string>& arguments, bool recursive,
                                        const ResizeSets& sets);

} // namespace kestrine
