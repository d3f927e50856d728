// ConvertEnding: the last lines of a run and its exit status.
#pragma once

#include "kestrinectl/convert/ConvertReport.h"

namespace kestrine {

/// What the end of a run depends on beside its report.
struct ConvertEnding {
    bool allowsEmpty = false; ///< whether a run without files is a success
    std::size_t journal = 0;  ///< the number of the run for `undo`; 0 if nothing was replaced
};

/// The totals as scripts get them.
nlohmann::ordered_json totalsOf(const ConvertReport& report, const ConvertEnding& ending);

/// Ends the output with the totals: a line or an error for people, an object for scripts. Throws CommandError
/// if anything failed or a signal stopped the run.
void finish(const ConvertReport& report, const ConvertEnding& ending);

} // namespace kestrine
