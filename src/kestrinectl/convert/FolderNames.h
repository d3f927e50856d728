// FolderNames: the names in a folder of any size, in little memory.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kestrine {

class FolderNames {
public:
    void add(const std::string& name);
    /// Sorts the names by their bytes.
    void sort();

    std::size_t count() const { return entries_.size(); }
    const char* operator[](std::size_t position) const { return names_.data() + entries_[position].begin; }

private:
    struct Entry {
        std::uint64_t key; ///< the first bytes after those that all names share, for quick comparisons
        std::size_t begin;
    };

    std::size_t sharedLength() const;

    std::vector<char> names_; ///< each with a zero byte at its end
    std::vector<Entry> entries_;
};

} // namespace kestrine
