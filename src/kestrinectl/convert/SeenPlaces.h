// SeenPlaces: which files a search has found already.
#pragma once

#include <filesystem>
#include <string>
#include <unordered_map>
#include <unordered_set>

namespace kestrine {

/// Two paths of one place, such as through links to folders, count as one. A link to a file is a place of its
/// own.
class SeenPlaces {
public:
    /// Notes the file. False if it was noted before.
    bool add(const std::filesystem::path& file);

private:
    using Names = std::unordered_set<std::string>;

    std::unordered_map<std::string, Names> names_;    ///< by folder, without links
    std::unordered_map<std::string, Names*> folders_; ///< the same by folder as it was given
};

} // namespace kestrine
