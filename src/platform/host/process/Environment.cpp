#include "platform/host/process/Environment.h"

#include "platform/host/files/PathParts.h"
#include "platform/host/process/UserDatabase.h"

#include <string_view>
#include <unistd.h>

namespace kestrine {

Environment Environment::ofProcess() {
    Environment environment{};
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
        const std::string_view text = *entry;
        const std::size_t equals = text.find('=');
        if (equals != std::string_view::npos)
            environment.variables_.emplace(text.substr(0, equals), text.substr(equals + 1));
    }
    return environment;
}

std::optional<std::string> Environment::variable(const std::string& name) const {
    const auto found = variables_.find(name);
    return found == variables_.end() ? std::nullopt : std::optional(found->second);
}

std::string Environment::homeFolder() const {
    std::string home = variable("HOME").value_or("");
    return home.starts_with('/') ? home : homeFolderOfCurrentUser().value_or("");
}

std::string Environment::xdgDataHome() const { return baseFolder("XDG_DATA_HOME", ".local/share"); }

std::string Environment::xdgConfigHome() const { return baseFolder("XDG_CONFIG_HOME", ".config"); }

std::string Environment::xdgStateHome() const { return baseFolder("XDG_STATE_HOME", ".local/state"); }

std::string Environment::xdgCacheHome() const { return baseFolder("XDG_CACHE_HOME", ".cache"); }

std::vector<std::string> Environment::xdgConfigDirs() const {
    const std::string list = variable("XDG_CONFIG_DIRS").value_or("") + ":";
    std::vector<std::string> folders;
    for (std::size_t begin = 0, end = 0; (end = list.find(':', begin)) != std::string::npos; begin = end + 1)
        if (list[begin] == '/')
            folders.push_back(list.substr(begin, end - begin));
    return folders.empty() ? std::vector<std::string>{"/etc/xdg"} : folders;
}

std::string Environment::baseFolder(const std::string& variableName, const std::string& belowHome) const {
    std::string folder = variable(variableName).value_or("");
    if (folder.starts_with('/'))
        return folder;
    const std::string home = homeFolder();
    return home.starts_with('/') ? joinedPath(home, belowHome) : "";
}

} // namespace kestrine
