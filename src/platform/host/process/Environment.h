// Environment: the variables that the process was given, and the user's folders that follow from them.
// The one place that knows where a desktop keeps data and configuration (XDG base directories 0.8).
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

    /// For tests: Environment{{"HOME", "/home/me"}, {"PWD", "/"}}.
    Environment(std::initializer_list<Variables::value_type> variables) : variables_(variables) {}

    /// A copy of what this process was started with (and has set since).
    static Environment ofProcess();

    /// Absent when not set; an empty value is a value.
    std::optional<std::string> variable(const std::string& name) const;

    /// HOME when it is an absolute path, else what the user database says; "" when neither knows.
    std::string homeFolder() const;

    /// Values that are unset, empty or relative give way to the default. "" without a home folder.
    std::string xdgDataHome() const;
    std::string xdgConfigHome() const;

    /// The absolute ones of XDG_CONFIG_DIRS, most important first; /etc/xdg when there is none.
    std::vector<std::string> xdgConfigDirs() const;

private:
    std::string baseFolder(const std::string& variableName, const std::string& belowHome) const;

    Variables variables_;
};

} // namespace kestrine
