#include "kestrinectl/GivenPaths.h"

#include "kestrinectl/CommandError.h"

namespace kestrine {

namespace fs = std::filesystem;

// ".." stays, since after a link it may not lead to the previous folder.
fs::path absolutePath(const fs::path& path) {
    if (path.empty())
        throw CommandError("an empty argument names no file");
    std::error_code error;
    const fs::path absolute = fs::absolute(path, error);
    if (error)
        throw CommandError("the current folder cannot be found: " + error.message());
    fs::path result;
    for (const fs::path& step : absolute)
        if (step != ".")
            result /= step;
    return result;
}

fs::path canonicalPath(const fs::path& path) {
    std::error_code error;
    const fs::path canonical = fs::weakly_canonical(path, error);
    return error ? path : canonical;
}

std::string placeOf(const std::string& path) {
    const fs::path file = path;
    return (canonicalPath(file.parent_path()) / file.filename()).native();
}

fs::path withoutTrailingSeparator(const fs::path& path) {
    return path.has_filename() || !path.has_relative_path() ? path : path.parent_path();
}

} // namespace kestrine
