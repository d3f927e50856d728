// Environment: the environment variables, and the user's folders that follow from them.
// The folders for data and configuration follow the XDG Base Directory Specification 0.8.
#pragma once

#include <initializer_list>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace kestrine {

class Environment {
public:
    using Variables = std::map<std::string, std::string>;

    /// These variables and no others: Environment{{"HOME", "/home/me"}, {"PWD", "/"}}.
    Environment(std::initializer_list<Variables::value_type> variables) : variables_(variables) {}

    /// A copy of the current environment of this process.
    static Environment ofProcess();

    /// Empty if the variable is not set; a variable that is set to "" gives "".
    std::optional<std::string> variable(const std::string& name) const;

    /// HOME if it is an absolute path, otherwise the home folder from the user database; "" if there is none.
    std::string homeFolder() const;

    /// XDG_DATA_HOME if it is an absolute path, otherwise .local/share in the home folder; "" without a home
    /// folder.
    std::string xdgDataHome() const;
    /// XDG_CONFIG_HOME if it is an absolute path, otherwise .config in the home folder; "" without a home
    /// folder.
    std::string xdgConfigHome() const;
    /// XDG_STATE_HOME if it is an absolute path, otherwise .local/state in the home folder; "" without a home
    /// folder.
    std::string xdgStateHome() const;
    /// XDG_CACHE_HOME if it is an absolute path, otherwise .cache in the home folder; "" without a home
    /// folder.
    std::string xdgCacheHome() const;

    /// The absolute paths in XDG_CONFIG_DIRS, most important first; /etc/xdg if there is none.
    std::vector<std::string> xdgConfigDirs() const;

private:
    std::string baseFolder(const std::string& variableName, const std::string& belowHome) const;

    Variables variables_;
};

} // namespace kestrine
