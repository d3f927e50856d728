#include "kestrinectl/ShownPath.h"

#include <filesystem>

namespace kestrine {

std::string shownPath(const std::string& path) {
    std::filesystem::path result;
    for (const std::filesystem::path& step : std::filesystem::path(path))
        if (step != "." && !step.empty())
            result /= step;
    if (result.empty())
        return path.empty() ? "" : ".";
    const bool needsDot = path.starts_with("./") && result.native().starts_with('-');
    return needsDot ? "./" + result.native() : result.native();
}

} // namespace kestrine
