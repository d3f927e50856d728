#include "tests/platform/finder/FinderTesting.h"

#include <algorithm>
#include <fstream>
#include <sys/stat.h>

namespace kestrine::testing {

std::vector<std::string> namesIn(const std::string& folder) {
    std::vector<std::string> names;
    std::error_code absent;
    for (const auto& entry : std::filesystem::directory_iterator(folder, absent))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

std::int32_t numberOf(const FinderOutcome& outcome) { return outcome ? outcome->number : 0; }

bool isOnAnotherDevice(const std::string& folder) {
    struct stat here {
    }, there{};
    return ::stat(std::filesystem::temp_directory_path().c_str(), &here) == 0
           && ::stat(folder.c_str(), &there) == 0 && here.st_dev != there.st_dev;
}

std::string FinderTest::makeFolder(const std::filesystem::path& path) {
    std::filesystem::create_directories(path);
    return path.string();
}

std::string FinderTest::write(const std::string& path, const std::string& content) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << content;
    return path;
}

void FinderTest::openToAll() const {
    std::filesystem::permissions(folder_.path(), std::filesystem::perms(0755));
    for (const std::string& path : {from_, to_})
        std::filesystem::permissions(path, std::filesystem::perms::all);
}

} // namespace kestrine::testing
