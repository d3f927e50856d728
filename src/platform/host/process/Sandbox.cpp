#include "platform/host/process/Sandbox.h"

#include "platform/host/files/FileDescriptor.h"
#include "platform/host/process/Landlock.h"
#include "platform/host/process/Sanitizers.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <optional>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace kestrine {

namespace {

constexpr rlim_t maxDescriptors = 32;
/// Larger than any result: 2^30 pixels of 8 bytes.
constexpr rlim_t maxFileSize = rlim_t{64} << 30;

/// The address space of this process in bytes. Empty if the system does not report it.
std::optional<rlim_t> addressSpaceInUse() {
    const FileDescriptor file(::open("/proc/self/statm", O_RDONLY | O_CLOEXEC));
    std::array<char, 32> pages{}; // the first number in the file; it ends with a zero here
    if (!file.isOpen() || ::read(file.number(), pages.data(), pages.size() - 1) <= 0)
        return std::nullopt;
    return std::strtoull(pages.data(), nullptr, 10) * static_cast<rlim_t>(::sysconf(_SC_PAGESIZE));
}

/// Lowers a limit. A limit that is already lower does not change.
bool lowerLimit(__rlimit_resource resource, rlim_t value) {
    rlimit limit{};
    if (::getrlimit(resource, &limit) != 0)
        return false;
    limit.rlim_cur = limit.rlim_max = std::min(limit.rlim_cur, value);
    return ::setrlimit(resource, &limit) == 0;
}

/// The shadow memory of sanitizers needs more address space than any limit allows.
bool limitAddressSpace(std::uint64_t more) {
    if (more == 0 || builtWithSanitizers)
        return true;
    const std::optional<rlim_t> used = addressSpaceInUse();
    return used && lowerLimit(RLIMIT_AS, *used + more);
}

bool lowerLimits(const SandboxLimits& limits) {
    const bool lowered[] = {limitAddressSpace(limits.addressSpace), lowerLimit(RLIMIT_CORE, 0),
                            lowerLimit(RLIMIT_NOFILE, maxDescriptors), lowerLimit(RLIMIT_FSIZE, maxFileSize),
                            ::prctl(PR_SET_DUMPABLE, 0, 0, 0, 0) == 0};
    return std::all_of(std::begin(lowered), std::end(lowered), [](bool succeeded) { return succeeded; });
}

} // namespace

SandboxLayers enterSandbox(const SandboxLimits& limits) {
    SandboxLayers layers;
    layers.limits = lowerLimits(limits);
    // The next two layers need this. It also prevents the start of privileged programs.
    (void)::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    layers.landlock = denyAccessByName();
    layers.systemCalls = allowListedCallsOnly(limits.unlistedCalls);
    return layers;
}

} // namespace kestrine
