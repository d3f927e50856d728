#include "kestrinectl/convert/ConvertResources.h"

#include "kestrinectl/text/NumberBetween.h"

#include <algorithm>

namespace kestrine {

namespace {

constexpr unsigned maxJobs = 1024; // more would only compete for memory

} // namespace

void ConvertResources::addTo(CLI::App& command) {
    command
        .add_option("-j,--jobs", jobs,
                    "How many files to convert at the same time (default: the number of cores)")
        ->check(numberBetween(1U, maxJobs))
        ->option_text("N");
    command
        .add_option("--isolation", isolation,
                    "Decode in worker processes with the protection that the system offers (auto), only "
                    "with all of it (strict), or in this process (off) (default: auto)")
        ->check(CLI::Validator(
            [](const std::string& word) -> std::string {
                return isolationNamed(word) ? "" : "must be auto, strict or off";
            },
            ""))
        ->option_text("auto|strict|off");
}

unsigned ConvertResources::threadsFor(std::size_t count) const {
    return static_cast<unsigned>(std::clamp<std::size_t>(count, 1, jobs));
}

DecoderIsolation ConvertResources::isolate(unsigned threads) const {
    return DecoderIsolation(*isolationNamed(isolation), threads);
}

} // namespace kestrine
