#include "platform/host/process/Landlock.h"

#include "platform/host/files/FileDescriptor.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <sys/syscall.h>
#include <unistd.h>

// The constants are our own, because the headers that we build with are older than the systems that the
// program may run on.

namespace kestrine {

namespace {

/// The rights of each version of the interface, the oldest first, as the kernel's documentation numbers them.
struct Rights {
    std::uint64_t files;   ///< to run, write, read, list, remove and make files of each kind ...
    std::uint64_t network; ///< to bind and to connect with TCP
    std::uint64_t scopes;  ///< to reach abstract sockets and to signal processes outside
};
constexpr std::uint64_t firstRights(int count) { return (std::uint64_t{1} << count) - 1; }
constexpr std::array<Rights, 6> rightsOfVersions{{
    {firstRights(13), 0, 0},
    {firstRights(14), 0, 0},              // to link and rename into another folder
    {firstRights(15), 0, 0},              // to truncate
    {firstRights(15), firstRights(2), 0}, //
    {firstRights(16), firstRights(2), 0}, // to control devices
    {firstRights(16), firstRights(2), firstRights(2)},
}};

constexpr unsigned askForVersion = 1; // LANDLOCK_CREATE_RULESET_VERSION

} // namespace

bool denyAccessByName() {
    const long version = ::syscall(SYS_landlock_create_ruleset, nullptr, 0, askForVersion);
    if (version < 1)
        return false;
    const auto known = std::min(static_cast<std::size_t>(version), rightsOfVersions.size());
    // An older system accepts the fields that it does not know, because they are 0.
    const Rights& denied = rightsOfVersions[known - 1];
    const FileDescriptor rules(
        static_cast<int>(::syscall(SYS_landlock_create_ruleset, &denied, sizeof denied, 0)));
    return rules.isOpen() && ::syscall(SYS_landlock_restrict_self, rules.number(), 0) == 0;
}

} // namespace kestrine
