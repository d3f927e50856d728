// PlanFile: an open plan.
#pragma once

#include "kestrinectl/shards/Plan.h"

#include <fstream>
#include <string>

namespace kestrine {

class PlanFile {
public:
    /// Throws CommandError if the file cannot be opened or is not a plan.
    explicit PlanFile(const std::string& path);
    PlanFile(const PlanFile&) = delete;
    PlanFile& operator=(const PlanFile&) = delete;

    PlanReader& reader() { return reader_; }

private:
    std::ifstream stream_;
    PlanReader reader_;
};

} // namespace kestrine
