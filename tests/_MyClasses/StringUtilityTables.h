// The tables "StringUtility" that the tests of the text operations look texts up in.
#pragma once

#include "platform/foundation/NSBundle.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/SourceFolder.h"

#include <gtest/gtest.h>

namespace kestrine::testing {

/// A test with the folder of a strings table that it writes itself, or with the tables of the source tree.
class TextTables : public ::testing::Test {
protected:
    /// A bundle whose English table holds `entries`; each test asks for one.
    NSBundle& given(const std::string& entries) {
        folder_.write("English.lproj/StringUtility.strings", entries);
        return bundle_.emplace(folder_.path().string(), Environment{});
    }

    /// A bundle without any table: each key is its own text.
    NSBundle& withoutTable() { return bundle_.emplace(std::string(), Environment{}); }

    NSBundle& shipped(const std::string& language) {
        return bundle_.emplace(inSourceFolder("share"), Environment{{"LANG", language}});
    }

private:
    TemporaryFolder folder_;
    std::optional<NSBundle> bundle_;
};

} // namespace kestrine::testing
