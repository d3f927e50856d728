// RootFolder: the folder to which the paths of a plan are relative, and which no path may leave.
#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace kestrine {

/// Any thread.
class RootFolder {
public:
    /// Throws CommandError with status 2 unless it is a folder.
    explicit RootFolder(const std::string& path);

    /// The path below the root, with the links in its folders resolved; nullopt if it lies outside.
    std::optional<std::string> relative(const std::string& path) const;

    std::string absolute(const std::string& relative) const { return prefix_ + relative; }

    /// Whether a relative path stays below the root if links in its folders are followed.
    bool holds(const std::string& relativePath) const { return relative(absolute(relativePath)).has_value(); }

private:
    std::string prefix_; ///< without links, and with a slash at the end
    mutable std::mutex mutex_;
    mutable std::map<std::string, std::string> folders_; ///< without links, by path; guarded by mutex_
};

} // namespace kestrine
