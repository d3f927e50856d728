#include "kestrinectl/shards/Shard.h"

#include <charconv>

namespace kestrine {

namespace {

constexpr std::string_view numbersOfLog = "-of-", endOfLog = ".jsonl";

/// Spreads numbers evenly: the finalizer of SplitMix64.
std::uint64_t mixed(std::uint64_t number) {
    number = (number ^ (number >> 30)) * 0xbf58476d1ce4e5b9;
    number = (number ^ (number >> 27)) * 0x94d049bb133111eb;
    return number ^ (number >> 31);
}

} // namespace

std::uint32_t shardOf(std::uint64_t group, std::uint32_t count) {
    return static_cast<std::uint32_t>(mixed(group) % count) + 1;
}

std::optional<Shard> shardIn(const std::string& word) {
    Shard shard;
    const char *begin = word.data(), *const end = begin + word.size();
    const auto [slash, error] = std::from_chars(begin, end, shard.number);
    if (error != std::errc() || slash == end || *slash != '/')
        return std::nullopt;
    const auto [after, countError] = std::from_chars(slash + 1, end, shard.count);
    const bool isRight = countError == std::errc() && after == end && shard.number >= 1
                         && shard.number <= shard.count && shard.count <= maxShards;
    return isRight ? std::optional(shard) : std::nullopt;
}

std::string defaultLog(const std::string& plan, Shard shard) {
    return plan + "." + std::to_string(shard.number) + std::string(numbersOfLog) + std::to_string(shard.count)
           + std::string(endOfLog);
}

bool isDefaultLog(const std::string& plan, const std::string& name) {
    const std::string begin = plan + ".";
    if (!name.starts_with(begin) || !name.ends_with(endOfLog))
        return false;
    std::string word = name.substr(begin.size());
    const std::size_t separator = word.find(numbersOfLog);
    if (separator == std::string::npos)
        return false;
    word.resize(word.size() - endOfLog.size());
    const auto shard = shardIn(word.replace(separator, numbersOfLog.size(), "/"));
    return shard && defaultLog(plan, *shard) == name;
}

} // namespace kestrine
