#include "platform/host/process/Environment.h"
#include "tests/support/IsolatedProcess.h"

#include <cstdlib>
#include <gmock/gmock.h>
#include <pwd.h>
#include <unistd.h>

namespace kestrine {
namespace {

using ::testing::ElementsAre;

TEST(Environment, baseFoldersAreInTheHomeFolderByDefault) {
    const Environment environment{{"HOME", "/home/me"}};
    EXPECT_EQ(environment.homeFolder(), "/home/me");
    EXPECT_EQ(environment.xdgDataHome(), "/home/me/.local/share");
    EXPECT_EQ(environment.xdgConfigHome(), "/home/me/.config");
    EXPECT_EQ(environment.xdgCacheHome(), "/home/me/.cache");
    EXPECT_THAT(environment.xdgConfigDirs(), ElementsAre("/etc/xdg"));
}

TEST(Environment, absoluteBaseFoldersAreUsedUnchanged) {
    const Environment environment{{"HOME", "/home/me"},
                                  {"XDG_DATA_HOME", "/data"},
                                  {"XDG_CONFIG_HOME", "/config \xFF"},
                                  {"XDG_CACHE_HOME", "/cache"},
                                  {"XDG_CONFIG_DIRS", "/one:/two"}};
    EXPECT_EQ(environment.xdgDataHome(), "/data");
    EXPECT_EQ(environment.xdgConfigHome(), "/config \xFF");
    EXPECT_EQ(environment.xdgCacheHome(), "/cache");
    EXPECT_THAT(environment.xdgConfigDirs(), ElementsAre("/one", "/two"));
}

TEST(Environment, emptyAndRelativeBaseFoldersAreIgnored) {
    for (const char* value : {"", "data", "./data", "~/data"}) {
        const Environment environment{{"HOME", "/h"}, {"XDG_DATA_HOME", value}, {"XDG_CONFIG_HOME", value}};
        EXPECT_EQ(environment.xdgDataHome(), "/h/.local/share") << value;
        EXPECT_EQ(environment.xdgConfigHome(), "/h/.config") << value;
    }
}

TEST(Environment, relativeConfigurationFoldersAreIgnored) {
    const auto folders = [](const char* value) {
        return Environment{{"XDG_CONFIG_DIRS", value}}.xdgConfigDirs();
    };
    EXPECT_THAT(folders("one:/two::/three:"), ElementsAre("/two", "/three"));
    EXPECT_THAT(folders("one:two"), ElementsAre("/etc/xdg"));
    EXPECT_THAT(folders(""), ElementsAre("/etc/xdg"));
}

TEST(Environment, withoutAnAbsoluteHomeTheUserDatabaseIsUsed) {
    const passwd* user = ::getpwuid(::getuid());
    const std::string expected = user != nullptr ? user->pw_dir : "";
    for (const Environment& environment :
         {Environment{}, Environment{{"HOME", ""}}, Environment{{"HOME", "x"}}})
        EXPECT_EQ(environment.homeFolder(), expected);
}

TEST(Environment, withoutAHomeFolderThereAreNoBaseFolders) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can become another user";
    testing::runIsolated([] {
        ASSERT_EQ(::setuid(54321), 0); // the user database does not list this user
        const Environment environment{};
        EXPECT_EQ(environment.homeFolder(), "");
        EXPECT_EQ(environment.xdgDataHome(), "");
        EXPECT_EQ(environment.xdgConfigHome(), "");
    });
}

TEST(Environment, valuesOfTheProcessMayBeEmptyOrContainEqualsSigns) {
    testing::runIsolated([] {
        ::setenv("KESTRINE_TEST_EMPTY", "", 1);
        ::setenv("KESTRINE_TEST_EQUALS", "a=b", 1);
        const Environment environment = Environment::ofProcess();
        EXPECT_EQ(environment.variable("KESTRINE_TEST_EMPTY"), "");
        EXPECT_EQ(environment.variable("KESTRINE_TEST_EQUALS"), "a=b");
        EXPECT_EQ(environment.variable("KESTRINE_TEST_ABSENT"), std::nullopt);
    });
}

TEST(Environment, aProcessMayHaveNoEnvironment) {
    testing::runIsolated([] {
        ::clearenv();
        EXPECT_EQ(Environment::ofProcess().variable("PWD"), std::nullopt);
    });
}

} // namespace
} // namespace kestrine
