#include "kestrinectl/shards/OpenedInput.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/text/ShownPath.h"

#include <cerrno>
#include <cstring>
#include <filesystem>

namespace kestrine {

std::ifstream openedInput(const std::string& kind, const std::string& path) {
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored))
        throw CommandError("the " + kind + " " + shownPath(path) + " is a folder");
    std::ifstream stream(path, std::ios::binary);
    if (!stream)
        throw CommandError("the " + kind + " " + shownPath(path)
                           + " cannot be opened: " + std::strerror(errno));
    return stream;
}

} // namespace kestrine
