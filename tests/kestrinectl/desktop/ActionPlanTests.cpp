#include "kestrinectl/desktop/ActionPlan.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

TEST(MarkedContent, hasTheMarkInItsSecondLine) {
    const std::string content = markedContent("#!/bin/sh\nexec x\n");
    EXPECT_TRUE(content.starts_with("#!/bin/sh\n# Made by 'kestrinectl desktop install'"));
    EXPECT_TRUE(content.ends_with("\nexec x\n"));
}

TEST(MarkedContent, differsForOtherContent) { EXPECT_NE(markedContent("a\nb\n"), markedContent("a\nc\n")); }

} // namespace
} // namespace kestrine
