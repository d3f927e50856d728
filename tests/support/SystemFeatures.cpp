#include "tests/support/SystemFeatures.h"

#include "tests/support/IsolatedProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <cerrno>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace kestrine::testing {

bool keepsAttributes(const std::filesystem::path& folder, std::size_t size) {
    const TemporaryFolder probes(folder);
    const std::string probe = probes.write("probe", "");
    const std::string value(size, 'x');
    return ::setxattr(probe.c_str(), "user.kestrine.probe", value.data(), value.size(), 0) == 0;
}

bool keepsAttributes() { return keepsAttributes(std::filesystem::temp_directory_path()); }

bool hasLandlock() {
    constexpr unsigned askForVersion = 1;
    return ::syscall(SYS_landlock_create_ruleset, nullptr, 0, askForVersion) > 0;
}

bool permitsSystemCallFilters() {
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(failSystemCall(SYS_sync, EPERM) ? 0 : 1);
    int status = 0;
    return ::waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

} // namespace kestrine::testing
