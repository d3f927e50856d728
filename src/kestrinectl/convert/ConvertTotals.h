// ConvertTotals: the figures of a whole conversion.
#pragma once

#include "kestrinectl/convert/ConvertResult.h"

#include <array>
#include <map>

namespace kestrine {

struct ConvertTotals {
    std::array<std::size_t, 5> files{}; ///< by ConvertStatus
    std::size_t folderFailures = 0;     ///< folders that could not be read
    std::size_t otherFiles = 0;         ///< in folders; neither pictures nor hidden
    std::size_t outputs = 0;
    std::size_t notUpright = 0;    ///< files with a result that is not upright
    std::uint64_t bytesRead = 0;   ///< of all files that were looked at
    std::uint64_t bytesBefore = 0; ///< of the files that were converted
    std::uint64_t bytesAfter = 0;
    std::map<std::string_view, std::size_t> failures; ///< by kind

    void add(const ConvertResult& result);

    std::size_t count(ConvertStatus status) const { return files[static_cast<std::size_t>(status)]; }
    /// Files with any result, good or bad.
    std::size_t finished() const;
};

/// One line: "3 files converted, 2 skipped, 10.2 MB -> 1.1 MB in 3.2 s".
std::string totalsLine(const ConvertTotals& totals, std::chrono::milliseconds duration);

/// One line: "1 of 5 files could not be converted as requested (1 damaged)"; "" if nothing failed.
std::string failuresLine(const ConvertTotals& totals);

} // namespace kestrine
