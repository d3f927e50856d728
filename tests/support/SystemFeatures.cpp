#include "tests/support/SystemFeatures.h"

#include "tests/support/TemporaryFolder.h"

#include <dlfcn.h>
#include <sys/xattr.h>

namespace kestrine::testing {

bool keepsAttributes(const std::filesystem::path& folder, std::size_t size) {
    const TemporaryFolder probes(folder);
    const std::string probe = probes.write("probe", "");
    const std::string value(size, 'x');
    return ::setxattr(probe.c_str(), "user.kestrine.probe", value.data(), value.size(), 0) == 0;
}

bool keepsAttributes() { return keepsAttributes(std::filesystem::temp_directory_path()); }

bool isICUInstalled() {
    constexpr int oldestVersion = 60, newestVersion = 99;
    for (int version = newestVersion; version >= oldestVersion; --version)
        if (::dlopen(("libicuuc.so." + std::to_string(version)).c_str(), RTLD_LAZY) != nullptr)
            return true;
    return false;
}

} // namespace kestrine::testing
