#include "platform/host/process/UserDatabase.h"

#include "platform/host/files/PathParts.h"

#include <cerrno>
#include <pwd.h>
#include <unistd.h>
#include <vector>

namespace kestrine {

namespace {

/// `lookUp` is one of the getpw..._r functions with its key bound. It is called with larger buffers until its
/// answer fits.
template <class LookUp>
std::optional<std::string> homeFolderFrom(const LookUp& lookUp) {
    constexpr std::size_t maxBuffer = 1024 * 1024;
    for (std::vector<char> buffer(1024); buffer.size() <= maxBuffer; buffer.resize(2 * buffer.size())) {
        passwd user{};
        passwd* found = nullptr;
        if (lookUp(&user, buffer.data(), buffer.size(), &found) == ERANGE)
            continue;
        if (found == nullptr || found->pw_dir == nullptr)
            return std::nullopt;
        return found->pw_dir;
    }
    return std::nullopt;
}

} // namespace

std::optional<std::string> homeFolderOfUser(const std::string& name) {
    if (!checkPath(name))
        return std::nullopt; // the system would look up the part before the zero byte
    return homeFolderFrom([&](passwd* user, char* buffer, std::size_t size, passwd** found) {
        return ::getpwnam_r(name.c_str(), user, buffer, size, found);
    });
}

std::optional<std::string> homeFolderOfCurrentUser() {
    return homeFolderFrom([](passwd* user, char* buffer, std::size_t size, passwd** found) {
        return ::getpwuid_r(::getuid(), user, buffer, size, found);
    });
}

} // namespace kestrine
