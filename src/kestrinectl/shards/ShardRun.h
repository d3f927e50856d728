// ShardRun: converts one file of a plan, if that is not done yet. Never replaces a file.
#pragma once

#include "kestrinectl/convert/ConvertResult.h"
#include "kestrinectl/shards/Plan.h"
#include "kestrinectl/shards/PlannedTreatment.h"
#include "kestrinectl/shards/RootFolder.h"
#include "kestrinectl/shards/ShardLog.h"

namespace kestrine {

/// Any thread. All arguments of the constructor must outlive the object.
class ShardRun {
public:
    ShardRun(const RootFolder& root, const PlannedTreatment& planned) : root_(root), planned_(planned) {}

    /// `logged`: what the log says about the file; may be null. Adds the outcome to `result`, with paths
    /// below the root.
    void convert(const PlanRecord& record, const LoggedFile* logged, ConvertResult& result) const;

private:
    bool isUsable(const PlanRecord& record, ConvertResult& result) const;
    bool isDone(const PlanRecord& record, const LoggedFile* logged) const;
    const LoggedResult* acceptOlder(const LoggedResult* logged, JobOutcome& outcome) const;
    ResizeJob jobFor(const PlanRecord& record) const;

    const RootFolder& root_;
    const PlannedTreatment& planned_;
};

} // namespace kestrine
