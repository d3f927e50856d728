// Numbers in messages for people. They do not depend on the locale.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace kestrine {

/// "1 file", "2 files".
std::string counted(std::size_t count, const std::string& noun);

/// "812 bytes", "1.2 kB", "45 kB", "3.1 MB"; k is 1000.
std::string shownBytes(std::uint64_t bytes);

/// "85 ms", "3.2 s", "1 min 20 s", "2 h 5 min".
std::string shownDuration(std::chrono::milliseconds duration);

/// The number with one digit after the point if it is below 10, otherwise rounded to a whole number: "3.1",
/// "45".
std::string shownShort(double number);

} // namespace kestrine
