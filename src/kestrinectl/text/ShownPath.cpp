#include "kestrinectl/text/ShownPath.h"

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

std::string withoutPath(std::string reason, const std::string& path) {
    if (reason.starts_with(path + " "))
        reason.erase(0, path.size() + 1);
    else if (const std::size_t found = reason.find(" " + path + ":"); found != std::string::npos)
        reason.erase(found, 1 + path.size());
    return reason;
}

} // namespace kestrine
