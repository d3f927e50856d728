#include "kestrinectl/text/ShownNumbers.h"

#include <array>
#include <cmath>

namespace kestrine {

std::string counted(std::size_t count, const std::string& noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string shownShort(double number) {
    const auto tenths = static_cast<std::uint64_t>(std::llround(number * 10));
    if (tenths >= 100)
        return std::to_string(std::llround(number));
    return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10);
}

std::string shownBytes(std::uint64_t bytes) {
    constexpr std::array<const char*, 5> units = {" kB", " MB", " GB", " TB", " PB"};
    constexpr double highest = 999.5; // would be rounded to 1000
    if (bytes < 1000)
        return counted(bytes, "byte");
    double number = static_cast<double>(bytes) / 1000;
    std::size_t unit = 0;
    for (; number >= highest && unit + 1 < units.size(); ++unit)
        number /= 1000;
    return shownShort(number) + units[unit];
}

std::string shownDuration(std::chrono::milliseconds duration) {
    const auto milliseconds = static_cast<std::uint64_t>(duration.count());
    const std::uint64_t seconds = (milliseconds + 500) / 1000;
    if (milliseconds < 1000)
        return std::to_string(milliseconds) + " ms";
    if (seconds < 60)
        return shownShort(static_cast<double>(milliseconds) / 1000) + " s";
    if (seconds < 3600)
        return std::to_string(seconds / 60) + " min " + std::to_string(seconds % 60) + " s";
    return std::to_string(seconds / 3600) + " h " + std::to_string(seconds % 3600 / 60) + " min";
}

} // namespace kestrine
