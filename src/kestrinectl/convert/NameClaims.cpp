#include "kestrinectl/convert/NameClaims.h"

#include <algorithm>
#include <filesystem>

namespace kestrine {

namespace {

/// The path that is tried before this one: "a.jpg" for "a_1.jpg". "" for a name without a number.
std::string wantedBefore(const std::string& name) {
    const std::filesystem::path path = name;
    const std::string stem = path.stem().native();
    const std::size_t digits = stem.find_last_not_of("0123456789") + 1;
    const bool isNumbered = digits > 1 && digits < stem.size() && stem[digits - 1] == '_';
    return isNumbered
               ? (path.parent_path() / (stem.substr(0, digits - 1) + path.extension().native())).native()
               : "";
}

} // namespace

std::set<std::size_t> NameClaims::add(std::size_t job, const std::vector<std::string>& wanted,
                                      const std::string& own) {
    std::set<std::size_t> earlier;
    for (const std::string& path : wanted) {
        addThoseOfFolders(path, earlier);
        const bool hasSame = addEarlier(path, earlier), hasInside = addThoseInside(path, earlier);
        const bool isContested = hasSame || hasInside || (path != own && isTaken_(path));
        if (const auto later = numbered_.find(path); isContested && later != numbered_.end())
            earlier.insert(later->second.begin(), later->second.end());
        claims_[path].push_back({job, isContested});
        if (const std::string before = wantedBefore(path); !before.empty())
            numbered_[before].insert(job);
        wanted_[job].push_back(path);
    }
    earlier.erase(job);
    return earlier;
}

/// Adds the jobs that may take this path. Returns whether there are any.
bool NameClaims::addEarlier(const std::string& path, std::set<std::size_t>& earlier) const {
    bool hasAny = false;
    if (const auto same = claims_.find(path); same != claims_.end()) {
        hasAny = true;
        earlier.insert(same->second.back().job); // which waits for the others
    }
    for (std::string before = wantedBefore(path); !before.empty(); before = wantedBefore(before))
        if (const auto claims = claims_.find(before); claims != claims_.end())
            for (const Claim& claim : claims->second)
                if (claim.isContested) {
                    hasAny = true;
                    earlier.insert(claim.job);
                }
    return hasAny;
}

/// Adds the jobs that want files where this path needs folders.
void NameClaims::addThoseOfFolders(const std::string& path, std::set<std::size_t>& earlier) const {
    for (std::size_t end = path.rfind('/'); end != std::string::npos && end > 0;
         end = path.rfind('/', end - 1))
        if (const auto claims = claims_.find(path.substr(0, end)); claims != claims_.end())
            earlier.insert(claims->second.back().job); // which waits for the others
}

/// Adds the jobs that need a folder with this path. Returns whether there are any.
bool NameClaims::addThoseInside(const std::string& path, std::set<std::size_t>& earlier) const {
    const std::string folder = path + '/';
    bool hasAny = false;
    for (auto inside = claims_.lower_bound(folder);
         inside != claims_.end() && inside->first.starts_with(folder); ++inside) {
        hasAny = true;
        for (const Claim& claim : inside->second)
            earlier.insert(claim.job);
    }
    return hasAny;
}

void NameClaims::remove(std::size_t job) {
    const auto wanted = wanted_.extract(job);
    if (wanted.empty())
        return;
    for (const std::string& path : wanted.mapped()) {
        const auto claims = claims_.find(path);
        if (claims == claims_.end())
            continue; // several results of the job wanted it; it was removed for the first of them
        std::erase_if(claims->second, [job](const Claim& claim) { return claim.job == job; });
        if (claims->second.empty())
            claims_.erase(claims);
        if (const auto numbered = numbered_.find(wantedBefore(path)); numbered != numbered_.end()) {
            numbered->second.erase(job);
            if (numbered->second.empty())
                numbered_.erase(numbered);
        }
    }
}

} // namespace kestrine
