// The strings tables "StringUtility" for tests.
#pragma once

#include "platform/foundation/NSBundle.h"
#include "tests/support/SourceFolder.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kestrine::testing {

/// A test with a strings table of its own, or with those of the source tree.
class TextTables : public ::testing::Test {
protected:
    /// A bundle whose English table contains `entries`; call it once per test.
    NSBundle& given(const std::string& entries) {
        folder_.write("English.lproj/StringUtility.strings", entries);
        return bundle_.emplace(folder_.path().string(), Environment{});
    }

    /// A bundle without tables: each key stands for itself.
    NSBundle& withoutTable() { return bundle_.emplace(std::string(), Environment{}); }

    NSBundle& shipped(const std::string& language) {
        return bundle_.emplace(inSourceFolder("share"), Environment{{"LANG", language}});
    }

private:
    TemporaryFolder folder_;
    std::optional<NSBundle> bundle_;
};

} // namespace kestrine::testing
