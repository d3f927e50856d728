#include "kestrinectl/convert/FolderNames.h"

#include <algorithm>
#include <cstring>

namespace kestrine {

namespace {

/// The next eight bytes as a number in which the first counts most; zeros after the end of the name.
std::uint64_t keyOf(const char* bytes) {
    std::uint64_t key = 0;
    const char* const end = bytes + ::strnlen(bytes, sizeof key);
    for (std::size_t i = 0; i < sizeof key; ++i)
        key = key << 8 | (bytes + i < end ? static_cast<std::uint8_t>(bytes[i]) : 0U);
    return key;
}

} // namespace

void FolderNames::add(const std::string& name) {
    entries_.push_back({0, names_.size()});
    names_.insert(names_.end(), name.c_str(), name.c_str() + name.size() + 1);
}

void FolderNames::sort() {
    const std::size_t shared = sharedLength();
    for (Entry& entry : entries_)
        entry.key = keyOf(names_.data() + entry.begin + shared);
    std::ranges::sort(entries_, [this](const Entry& one, const Entry& other) {
        if (one.key != other.key)
            return one.key < other.key;
        return std::strcmp(names_.data() + one.begin, names_.data() + other.begin) < 0;
    });
}

/// How many first bytes are the same in all names.
std::size_t FolderNames::sharedLength() const {
    if (entries_.empty())
        return 0;
    const char* const first = names_.data() + entries_.front().begin;
    std::size_t length = std::strlen(first);
    for (const Entry& entry : entries_) {
        const char* const name = names_.data() + entry.begin;
        length = static_cast<std::size_t>(std::mismatch(first, first + length, name).first - first);
    }
    return length;
}

} // namespace kestrine
