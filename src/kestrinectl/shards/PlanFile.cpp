#include "kestrinectl/shards/PlanFile.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/text/ShownPath.h"

#include <cerrno>
#include <cstring>
#include <filesystem>

namespace kestrine {

namespace {

std::ifstream opened(const std::string& path) {
    if (std::filesystem::is_directory(path))
        throw CommandError("the plan " + shownPath(path) + " is a folder");
    std::ifstream stream(path, std::ios::binary);
    if (!stream)
        throw CommandError("the plan " + shownPath(path) + " cannot be opened: " + std::strerror(errno));
    return stream;
}

} // namespace

PlanFile::PlanFile(const std::string& path) : stream_(opened(path)), reader_(stream_, shownPath(path)) {}

} // namespace kestrine
