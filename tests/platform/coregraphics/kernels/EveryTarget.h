// Runs a test once for every vector target of this machine, and for the plain loops.
#pragma once

#include <bit>
#include <gtest/gtest.h>
#include <hwy/targets.h>

namespace kestrine::testing {

template <class Test>
void onEveryTarget(const Test& test) {
    const auto all = hwy::SupportedTargets();
    ASSERT_NE(all, 0);
    for (auto left = all; left != 0; left &= left - 1) {
        const auto target = left & -left;
        SCOPED_TRACE(hwy::TargetName(target));
        hwy::SetSupportedTargetsForTest(target);
        test();
    }
    hwy::SetSupportedTargetsForTest(0);
}

} // namespace kestrine::testing
