// Reads any bytes as a plan. What is read stays below the root, and gives the same plan when it is written
// again.
#include "kestrinectl/shards/Plan.h"
#include "fuzz/Require.h"
#include "kestrinectl/CommandError.h"
#include "kestrinectl/shards/PlannedTreatment.h"

#include <algorithm>
#include <sstream>

namespace {

using namespace kestrine;
using fuzzing::require;

void readPlan(const std::string& text) {
    std::istringstream stream(text);
    PlanReader reader(stream, "plan");
    std::string again = textOf(reader.header());
    std::uint64_t count = 0;
    for (PlanRecord record; reader.next(record); ++count) {
        require(isBelowRoot(record.source) && record.results.size() == reader.header().resultsPerFile);
        require(std::ranges::all_of(record.results,
                                    [](const auto& path) { return path.empty() || isBelowRoot(path); }));
        again += textOf(record);
    }
    std::istringstream second(again + endOfPlan(count));
    PlanReader rereader(second, "plan");
    for (PlanRecord record; rereader.next(record); --count)
        require(count > 0);
    require(count == 0);
    const PlannedTreatment planned = treatmentFromText(reader.header().treatment, "plan");
    require(!planned.recipes.empty() && !replacesFiles(planned.recipes));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        readPlan({reinterpret_cast<const char*>(data), size});
    } catch (const CommandError&) { // refused
    }
    return 0;
}
