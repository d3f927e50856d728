// Opens and reads the files that users name as input of a command: plans, logs, lists and exports. They may
// be pipes, such as those that the shell makes.
#pragma once

#include <cstdint>
#include <fstream>
#include <functional>
#include <string>
#include <string_view>

namespace kestrine {

/// `kind`, such as "plan" or "log", is for messages. Throws CommandError if the file cannot be opened.
std::ifstream openedInput(const std::string& kind, const std::string& path);

inline constexpr const char* nameOfStandardInput = "standard input";

using PartReceiver = std::function<void(std::string_view part)>;

/// Hands over all of standard input in order, part by part. Throws CommandError if it cannot be read; what
/// `take` throws ends the reading.
void readStandardInput(const PartReceiver& take);

/// The whole content of a file, or of standard input if `path` is "-". Throws CommandError if it cannot be
/// read, or has more than `limit` bytes.
std::string contentOfInput(const std::string& kind, const std::string& path, std::uint64_t limit);

} // namespace kestrine
