#include "kestrinectl/convert/ConvertChains.h"

#include "kestrinectl/convert/ConvertInputs.h"
#include "kestrinectl/convert/ForEachPosition.h"
#include "platform/host/files/FileStatus.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <map>
#include <numeric>
#include <set>

namespace kestrine {

namespace {

namespace fs = std::filesystem;

/// The name that is tried before this one: "a.jpg" for "a_1.jpg". Empty for a name without a number.
fs::path wantedBefore(const fs::path& path) {
    const std::string stem = path.stem().native();
    const std::size_t digits = stem.find_last_not_of("0123456789") + 1;
    const bool isNumbered = digits > 1 && digits < stem.size() && stem[digits - 1] == '_';
    return isNumbered ? path.parent_path() / (stem.substr(0, digits - 1) + path.extension().native())
                      : fs::path();
}

/// Disjoint sets of positions, which can be joined.
class Chains {
public:
    explicit Chains(std::size_t count) : leaders_(count) { std::iota(leaders_.begin(), leaders_.end(), 0U); }

    void join(std::size_t first, std::size_t second) {
        const std::size_t one = leader(first), other = leader(second);
        leaders_[std::max(one, other)] = std::min(one, other);
    }

    std::vector<ConvertChain> all() {
        std::map<std::size_t, ConvertChain> chains;
        for (std::size_t i = 0; i < leaders_.size(); ++i)
            chains[leader(i)].push_back(i);
        std::vector<ConvertChain> result;
        for (auto& [first, chain] : chains)
            result.push_back(std::move(chain));
        return result;
    }

private:
    std::size_t leader(std::size_t position) {
        while (leaders_[position] != position)
            position = leaders_[position] = leaders_[leaders_[position]];
        return position;
    }

    std::vector<std::size_t> leaders_; ///< each points to an earlier one of its chain, the first to itself
};

/// The jobs whose first choice is this name, and whether one of them must use a later choice.
struct Name {
    std::vector<std::size_t> wantedBy;
    bool isContested = false;
};
using Names = std::map<fs::path, Name>;

Names firstChoices(const std::vector<ResizeJob>& jobs, unsigned threads) {
    std::vector<std::vector<NSString>> wanted(jobs.size());
    forEachPosition(jobs.size(), threads, [&](std::size_t i) { wanted[i] = wantedPaths(jobs[i]); });
    Names names;
    for (std::size_t i = 0; i < jobs.size(); ++i) {
        const fs::path own = jobs[i].replacesFile() ? placeOf(jobs[i].path.utf8()) : "";
        for (const NSString& path : wanted[i]) {
            if (path.isEmpty())
                continue;
            const fs::path choice = placeOf(path.utf8());
            Name& name = names[choice];
            name.isContested =
                name.isContested || !name.wantedBy.empty() || (choice != own && isTaken(choice.native()));
            name.wantedBy.push_back(i);
        }
    }
    return names;
}

} // namespace

std::vector<ConvertChain> independentChains(const std::vector<ResizeJob>& jobs, unsigned threads) {
    Names names = firstChoices(jobs, threads);
    std::vector<Names::iterator> shortestFirst;
    for (auto it = names.begin(); it != names.end(); ++it)
        shortestFirst.push_back(it);
    std::ranges::stable_sort(shortestFirst, {}, [](const auto& it) { return it->first.native().size(); });

    Chains chains(jobs.size());
    for (const auto& it : shortestFirst) {
        auto& [path, name] = *it;
        for (const std::size_t other : name.wantedBy)
            chains.join(name.wantedBy.front(), other);
        for (fs::path earlier = wantedBefore(path); !earlier.empty(); earlier = wantedBefore(earlier)) {
            const auto found = names.find(earlier);
            if (found == names.end() || !found->second.isContested)
                continue;
            chains.join(found->second.wantedBy.front(), name.wantedBy.front());
            name.isContested = true;
        }
    }
    return chains.all();
}

} // namespace kestrine
