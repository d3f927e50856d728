#include "platform/host/process/Locale.h"
#include "tests/support/IsolatedProcess.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace kestrine {
namespace {

/// What changesForUTF8() returns when only these variables name a locale.
EnvironmentChanges changesWith(const EnvironmentChanges& named) {
    for (const char* variable : {"LC_ALL", "LC_CTYPE", "LC_MESSAGES", "LC_TIME", "LANG"})
        ::unsetenv(variable);
    for (const auto& [variable, locale] : named)
        ::setenv(variable.c_str(), locale.c_str(), 1);
    return changesForUTF8();
}

TEST(Locale, inUTF8NothingChanges) {
    testing::runIsolated([] {
        EXPECT_EQ(changesWith({{"LANG", "C.UTF-8"}}), EnvironmentChanges());
        EXPECT_EQ(changesWith({{"LC_ALL", "C.UTF-8"}, {"LANG", "C"}}), EnvironmentChanges());
    });
}

TEST(Locale, inAnotherEncodingOnlyTheCharactersChangeAndTheLanguageStays) {
    testing::runIsolated([] {
        const EnvironmentChanges onlyCharacters{{"LC_CTYPE", "C.UTF-8"}};
        EXPECT_EQ(changesWith({}), onlyCharacters);
        EXPECT_EQ(changesWith({{"LANG", "C"}}), onlyCharacters);
        EXPECT_EQ(changesWith({{"LC_ALL", ""}, {"LC_CTYPE", "C"}}), onlyCharacters);
    });
}

TEST(Locale, whatNamesAllCategoriesOrIsNotInstalledIsReplacedAsAWhole) {
    testing::runIsolated([] {
        const EnvironmentChanges everything{{"LC_ALL", "C.UTF-8"}};
        EXPECT_EQ(changesWith({{"LC_ALL", "C"}}), everything);
        EXPECT_EQ(changesWith({{"LANG", "no_SUCH.locale"}}), everything);
        EXPECT_EQ(changesWith({{"LC_TIME", "no_SUCH.locale"}, {"LANG", "C.UTF-8"}}), everything);
    });
}

} // namespace
} // namespace kestrine
