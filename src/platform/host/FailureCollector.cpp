#include "platform/host/FailureCollector.h"

namespace kestrine {

namespace {

thread_local FailureCollector* innermost = nullptr;

} // namespace

FailureCollector::FailureCollector() : outer_(innermost) { innermost = this; }

FailureCollector::~FailureCollector() { innermost = outer_; }

void noteFailure(const Failure& failure) {
    if (innermost != nullptr)
        innermost->failures_.push_back(failure);
}

} // namespace kestrine
