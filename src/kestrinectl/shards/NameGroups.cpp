#include "kestrinectl/shards/NameGroups.h"

#include "platform/foundation/text/Decomposition.h"
#include "platform/foundation/text/NSString.h"
#include "platform/foundation/text/UnicodeCase.h"
#include "platform/host/files/ContentDigest.h"

#include <algorithm>

namespace kestrine {

namespace {

bool isASCII(const std::string& name) {
    return std::ranges::all_of(name, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::string lowerASCII(std::string name) {
    for (char& c : name)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return name;
}

/// The name without differences of case and composition. It is converted to upper case first, so that letters
/// without a capital of their own ("ß", "ſ") equal the letters that they become.
std::string folded(const std::string& name) {
    if (isASCII(name))
        return lowerASCII(name);
    const std::u16string letters = decomposed(NSString::fromUTF8(name).utf16(), Decomposition::canonical);
    return NSString(decomposed(lowerCased(upperCased(letters)), Decomposition::canonical)).utf8();
}

} // namespace

std::uint64_t keyOfName(const std::string& name) { return digestOf(folded(name)).number; }

void NameGroups::add(const std::string& source, const std::vector<std::string>& results) {
    const std::size_t record = leaders_.size();
    leaders_.push_back(record);
    lowest_.push_back(~std::uint64_t{0});
    bool hasResult = false;
    for (const std::string& result : results) {
        if (result.empty())
            continue;
        hasResult = true;
        const std::uint64_t key = keyOfName(result);
        const std::size_t own = leader(record);
        const auto [known, isNew] = records_.try_emplace(key, own);
        const std::size_t other = leader(known->second);
        hasSimilarNames_ = hasSimilarNames_ || !isNew;
        leaders_[std::max(own, other)] = std::min(own, other);
        lowest_[std::min(own, other)] = std::min({lowest_[own], lowest_[other], key});
    }
    if (!hasResult)
        lowest_[record] = keyOfName(source);
}

std::uint64_t NameGroups::groupOf(std::size_t record) { return lowest_[leader(record)]; }

std::size_t NameGroups::leader(std::size_t record) {
    while (leaders_[record] != record)
        record = leaders_[record] = leaders_[leaders_[record]];
    return record;
}

} // namespace kestrine
