// Shard: one of the parts into which a plan is divided.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace kestrine {

inline constexpr std::uint32_t maxShards = 10'000'000;

/// The shard, of `count`, to which the records of a group belong: from 1. Depends on nothing else, and never
/// changes between versions.
std::uint32_t shardOf(std::uint64_t group, std::uint32_t count);

struct Shard {
    std::uint32_t number = 1; ///< from 1
    std::uint32_t count = 1;

    bool operator==(const Shard&) const = default;

    bool holds(std::uint64_t group) const { return shardOf(group, count) == number; }
};

/// The shard that is written "3/16"; nullopt for anything else.
std::optional<Shard> shardIn(const std::string& word);

/// The name that the log of a shard has by default: that of the plan, and ".3-of-16.jsonl".
std::string defaultLog(const std::string& plan, Shard shard);

/// Whether a name is that of the log of any shard of the plan by default.
bool isDefaultLog(const std::string& plan, const std::string& name);

} // namespace kestrine
