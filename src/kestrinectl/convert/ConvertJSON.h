// ConvertJSON: the results of a conversion as JSON. share/kestrine/convert.schema.json describes it.
#pragma once

#include "kestrinectl/convert/ConvertResult.h"
#include "kestrinectl/convert/ConvertTotals.h"

#include <nlohmann/json.hpp>

namespace kestrine {

nlohmann::ordered_json toJSON(const ConvertResult& result);

/// How the run went on.
struct ConvertEnd {
    std::chrono::milliseconds duration{0};
    std::size_t left = 0; ///< files that were not begun
    int signal = 0;       ///< that stopped it; 0 for none
    int exitStatus = 0;
    std::size_t journal = 0; ///< the number of the run for `undo`; 0 if nothing was replaced
};

/// The last object.
nlohmann::ordered_json toJSON(const ConvertTotals& totals, const ConvertEnd& end);

} // namespace kestrine
