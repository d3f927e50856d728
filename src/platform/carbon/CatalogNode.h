// What a file-system reference refers to.
#pragma once

#include <string>

namespace kestrine {

/// An absolute path free of links and dots; "" is the level above the volumes.
class CatalogNode {
public:
    explicit CatalogNode(std::string path) : path_(std::move(path)) {}

    const std::string& path() const { return path_; }
    bool isTopLevel() const { return path_.empty(); }

private:
    const std::string path_;
};

} // namespace kestrine
