// FailureCollector: the reasons behind operations that only answer nothing when they fail.
// The quiet operations say theirs to noteFailure(); who wants to know keeps a collector meanwhile.
#pragma once

#include "platform/host/Result.h"

#include <vector>

namespace kestrine {

/// Collects what noteFailure() is told on this thread, from its making to its end. The innermost one gets it.
class FailureCollector {
public:
    FailureCollector();
    ~FailureCollector();
    FailureCollector(const FailureCollector&) = delete;
    FailureCollector& operator=(const FailureCollector&) = delete;

    /// In the order in which they happened.
    const std::vector<Failure>& failures() const { return failures_; }

private:
    friend void noteFailure(const Failure& failure);

    FailureCollector* const outer_;
    std::vector<Failure> failures_;
};

/// Does nothing when nobody collects.
void noteFailure(const Failure& failure);

} // namespace kestrine
