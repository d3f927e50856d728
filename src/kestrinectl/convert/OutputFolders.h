// OutputFolders: the folders that get results of a run, which a search leaves out.
#pragma once

#include "kestrinectl/convert/ConvertInputs.h"

#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace kestrine {

/// One thread. Both arguments of the constructor must outlive it.
class OutputFolders {
public:
    OutputFolders(const ConvertSearch& search, const std::vector<std::string>& arguments);

    /// Whether it is the folder of --out, or named like one that gets results.
    bool contain(const std::filesystem::path& folder) const;
    /// Whether it is the folder of --out.
    bool isOut(const std::filesystem::path& folder) const;
    /// Whether some argument is a folder that may get results.
    bool containArgument() const;
    /// True if the folder is not an argument and was not checked before.
    bool isNews(const std::filesystem::path& folder);

private:
    bool hasNameOfOne(const std::filesystem::path& folder) const;
    bool isInsideOut(const std::filesystem::path& folder) const;

    const std::vector<std::string>& arguments_;
    const std::filesystem::path outFolder_;                ///< canonical; empty if there is none
    std::vector<std::string> endings_;                     ///< of their paths: "/Web"
    std::optional<std::set<std::filesystem::path>> known_; ///< argument folders and those isNews() has seen
};

} // namespace kestrine
