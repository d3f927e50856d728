// FolderNames: the names in a folder of any size, in little memory.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kestrine {

class FolderNames {
public:
    void add(const std::string& name);
    /// By their bytes.
    void sort();

    std::size_t count() const { return begins_.size(); }
    const char* operator[](std::size_t position) const { return names_.data() + begins_[position]; }

private:
    std::vector<char> names_; ///< each with a zero byte at its end
    std::vector<std::size_t> begins_;
};

} // namespace kestrine
