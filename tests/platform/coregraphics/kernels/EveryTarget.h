// EveryTarget: runs a test once for every vector target of this machine.
#pragma once

#include <gtest/gtest.h>
#include <hwy/targets.h>

namespace kestrine::testing {

template <class Test>
void onEveryTarget(const Test& test) {
    for (const auto target : hwy::SupportedAndGeneratedTargets()) {
        SCOPED_TRACE(hwy::TargetName(target));
        hwy::SetSupportedTargetsForTest(target);
        test();
    }
    hwy::SetSupportedTargetsForTest(0);
}

} // namespace kestrine::testing
