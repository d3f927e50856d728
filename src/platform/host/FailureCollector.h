// FailureCollector: gets the failures of operations that cannot return them.
// Such an operation calls noteFailure(). A caller that needs the failures keeps a collector during the
// operation.
#pragma once

#include "platform/host/Result.h"

#include <vector>

namespace kestrine {

/// Collects the failures that this thread notes during the collector's lifetime. If several collectors exist,
/// the newest one gets the failure.
class FailureCollector {
public:
    FailureCollector();
    ~FailureCollector();
    FailureCollector(const FailureCollector&) = delete;
    FailureCollector& operator=(const FailureCollector&) = delete;

    /// The failures in the order in which they were noted.
    const std::vector<Failure>& failures() const { return failures_; }

private:
    friend void noteFailure(const Failure& failure);

    FailureCollector* const outer_;
    std::vector<Failure> failures_;
};

/// Adds `failure` to the newest collector of this thread. Does nothing if there is none.
void noteFailure(const Failure& failure);

} // namespace kestrine
