// NameGroups: which results could compete for a name on some file system. Files of a group are converted in
// one shard, in the order of the plan, so that every division into shards gives the same result.
#pragma once

#include "kestrinectl/shards/Shard.h"

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace kestrine {

/// A number that is equal for names that differ at most in upper and lower case and in how letters and
/// accents are composed; different for all other names, except for hash collisions.
std::uint64_t keyOfName(const std::string& name);

/// Disjoint groups of records. A group is named after its smallest key, so its number depends neither on the
/// order of the records nor on other groups.
class NameGroups {
public:
    /// Adds the next record. Its results ("" for none) join it with all records that have one of these names;
    /// a record without results stays alone, by its source.
    void add(const std::string& source, const std::vector<std::string>& results);

    /// The group of a record; after all of them were added.
    std::uint64_t groupOf(std::size_t record);

    /// Whether two results have names that only some file systems tell apart.
    bool hasSimilarNames() const { return hasSimilarNames_; }

private:
    std::size_t leader(std::size_t record);

    std::vector<std::size_t> leaders_;  ///< each points to an earlier one of its group, the first to itself
    std::vector<std::uint64_t> lowest_; ///< key, by leader
    std::unordered_map<std::uint64_t, std::size_t> records_; ///< by key
    bool hasSimilarNames_ = false;
};

} // namespace kestrine
