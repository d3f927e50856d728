#include "kestrinectl/convert/FolderNames.h"

#include <algorithm>
#include <cstring>

namespace kestrine {

void FolderNames::add(const std::string& name) {
    begins_.push_back(names_.size());
    names_.insert(names_.end(), name.c_str(), name.c_str() + name.size() + 1);
}

void FolderNames::sort() {
    std::ranges::sort(begins_, [this](std::size_t one, std::size_t other) {
        return std::strcmp(names_.data() + one, names_.data() + other) < 0;
    });
}

} // namespace kestrine
