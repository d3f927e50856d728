#include "platform/host/process/UserDatabase.h"

#include "platform/host/files/PathParts.h"

#include <cerrno>
#include <pwd.h>
#include <vector>

namespace kestrine {

std::optional<std::string> homeFolderOfUser(const std::string& name) {
    if (!checkPath(name))
        return std::nullopt; // the system would read another name
    constexpr std::size_t largest = 1024 * 1024;
    for (std::vector<char> texts(1024); texts.size() <= largest; texts.resize(2 * texts.size())) {
        passwd user{};
        passwd* found = nullptr;
        const int error = ::getpwnam_r(name.c_str(), &user, texts.data(), texts.size(), &found);
        if (error == ERANGE)
            continue;
        if (found == nullptr || found->pw_dir == nullptr)
            return std::nullopt;
        return found->pw_dir;
    }
    return std::nullopt;
}

} // namespace kestrine
