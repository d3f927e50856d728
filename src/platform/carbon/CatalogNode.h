// The target of a file-system reference.
#pragma once

#include <string>

namespace kestrine {

/// An absolute path without links, "." and ".."; "" is the top level, the parent of all volumes.
class CatalogNode {
public:
    explicit CatalogNode(std::string path) : path_(std::move(path)) {}

    const std::string& path() const { return path_; }
    bool isTopLevel() const { return path_.empty(); }

private:
    const std::string path_;
};

} // namespace kestrine
